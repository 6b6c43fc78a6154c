#pragma once

// The floor's output: as bare as its walk.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

constexpr std::size_t outputSize = 256 * 1024;

inline char output[outputSize + 65536];
inline char* out = output;
inline char hexPairs[256][2];

inline void flush()
{
    char const* from = output;
    while (from < out) {
        ssize_t const written = write(STDOUT_FILENO, from, static_cast<std::size_t>(out - from));
        if (written <= 0) {
            std::exit(1);
        }
        from += written;
    }
    out = output;
}

inline void putText(char const* text, std::size_t size)
{
    std::memcpy(out, text, size);
    out += size;
}

inline void putHex(std::uint32_t value)
{
    unsigned const digits = value == 0 ? 1 : (35 - static_cast<unsigned>(__builtin_clz(value))) / 4;
    std::uint32_t const swapped = __builtin_bswap32(value << (32 - 4 * digits));
    for (unsigned i = 0; i < 4; ++i) {
        std::memcpy(out + 2 * i, hexPairs[swapped >> (8 * i) & 0xff], 2);
    }
    out += digits;
}

// Hexadecimal text of a multiple of 8 bytes, a space after every fourth byte but the last.
inline void putBytes(unsigned char const* bytes, std::size_t size)
{
#if defined(__SSE2__)
    __m128i const low = _mm_set1_epi8(0x0f);
    for (std::size_t i = 0; i < size; i += 8) {
        __m128i const value = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(bytes + i));
        __m128i const high = _mm_and_si128(_mm_srli_epi16(value, 4), low);
        __m128i const nibbles = _mm_unpacklo_epi8(high, _mm_and_si128(value, low));
        __m128i const letters =
            _mm_and_si128(_mm_cmpgt_epi8(nibbles, _mm_set1_epi8(9)), _mm_set1_epi8('a' - '0' - 10));
        __m128i const digits = _mm_add_epi8(_mm_add_epi8(nibbles, _mm_set1_epi8('0')), letters);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), digits);
        out[8] = ' ';
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 9), _mm_srli_si128(digits, 8));
        out[17] = ' ';
        out += 18;
    }
    --out;
#else
    for (std::size_t i = 0; i < size; ++i) {
        if (i != 0 && i % 4 == 0) {
            *out++ = ' ';
        }
        std::memcpy(out, hexPairs[bytes[i]], 2);
        out += 2;
    }
#endif
}

inline void makeHexPairs()
{
    for (int i = 0; i < 256; ++i) {
        hexPairs[i][0] = "0123456789abcdef"[i >> 4];
        hexPairs[i][1] = "0123456789abcdef"[i & 15];
    }
}
