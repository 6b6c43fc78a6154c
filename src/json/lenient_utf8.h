#pragma once

namespace Quask::Json {

// UTF-8 as the encoding that a rapidjson::Writer reads texts in. Bytes that are not UTF-8 are read
// as U+FFFD: one for each sequence that breaks off, one for each byte that begins none. So no text
// stops the writer, whatever its bytes are.
//
// A sequence that the end of the text breaks off is read one byte beyond that end: it must be
// followed by a byte that continues no sequence, such as a NUL.
struct LenientUtf8
{
    using Ch = char;
    enum
    {
        supportUnicode = 1
    };

    // Takes one character from `is`, a stream as RapidJSON has them. Always true.
    template <typename InputStream>
    static bool Decode(InputStream& is, unsigned* codePoint)
    {
        auto const lead = static_cast<unsigned char>(is.Take());
        *codePoint = lead;
        if (lead < 0x80) {
            return true;
        }
        Sequence const sequence = sequenceOf(lead);
        unsigned value = sequence.bits;
        unsigned char lowest = sequence.lowest;
        unsigned char highest = sequence.highest;
        for (unsigned i = 0; i < sequence.more; ++i) {
            auto const next = static_cast<unsigned char>(is.Peek());
            if (next < lowest || next > highest) {
                value = replacement;
                break;
            }
            is.Take();
            value = value << 6 | (next & 0x3f);
            lowest = 0x80;
            highest = 0xbf;
        }
        *codePoint = value;
        return true;
    }

private:
    static constexpr unsigned replacement = 0xfffd;

    // What follows a lead byte.
    struct Sequence
    {
        unsigned bits;  // those of the lead byte itself
        unsigned more;  // bytes
        // The first of them is between these, so that no character has two sequences, none is a
        // surrogate and none is beyond U+10FFFF.
        unsigned char lowest = 0x80;
        unsigned char highest = 0xbf;
    };

    static Sequence sequenceOf(unsigned char lead)
    {
        if (lead >= 0xc2 && lead <= 0xdf) {
            return {lead & 0x1fu, 1};
        }
        if (lead >= 0xe0 && lead <= 0xef) {
            return {lead & 0x0fu, 2, static_cast<unsigned char>(lead == 0xe0 ? 0xa0 : 0x80),
                    static_cast<unsigned char>(lead == 0xed ? 0x9f : 0xbf)};
        }
        if (lead >= 0xf0 && lead <= 0xf4) {
            return {lead & 0x07u, 3, static_cast<unsigned char>(lead == 0xf0 ? 0x90 : 0x80),
                    static_cast<unsigned char>(lead == 0xf4 ? 0x8f : 0xbf)};
        }
        return {replacement, 0};
    }
};

}  // namespace Quask::Json
