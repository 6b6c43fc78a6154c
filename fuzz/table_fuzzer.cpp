// Scans a table and reports its headers, whatever its files hold and whatever its writer does
// at the same time; see edited_table.h for what an input means. Described ends are a result and an
// exception of the tool's own. Where nobody changes the table, the style of the values must not
// matter for how the scan ends, nor that they are printed as JSON, nor whether chains are read in
// batches for what it prints.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

#include "base/exception.h"
#include "edited_table.h"
#include "laid_out_table.h"
#include "report/quask_header_scanner.h"
#include "report/quask_textify.h"
#include "report/scan_preparation.h"
#if defined(QUASK_HAS_JSON)
#include "json/json_scanner.h"
#endif

namespace {

using Quask::QuaskTextify;
using QuaskFuzzing::EditedTable;
using QuaskFuzzing::LaidOutTable;

// Keeps any text, up to a length that shows that the report goes on as it should.
class Sink : public std::streambuf
{
public:
    struct Full
    {};

    void clear() { text_.clear(); }
    std::string const& text() const { return text_; }

protected:
    std::streamsize xsputn(char const* text, std::streamsize count) override
    {
        text_.append(text, static_cast<std::size_t>(count));
        if (text_.size() > maximum) {
            throw Full();
        }
        return count;
    }

    int_type overflow(int_type c) override
    {
        char const character = traits_type::to_char_type(c);
        xsputn(&character, 1);
        return traits_type::not_eof(c);
    }

private:
    static constexpr std::size_t maximum = 1 << 20;

    std::string text_;
};

// Prints the lines of a walk one by one.
class OneByOne final : public QuaskTextify
{
public:
    OneByOne(std::unique_ptr<unsigned char[]> valueBuffer, unsigned valueSize, std::ostream& output)
        : QuaskTextify(std::move(valueBuffer), valueSize, Plain, nullptr, "", true), output_(output)
    {}

    bool handleLineString(unsigned /*bucket*/, std::string_view line) override
    {
        output_ << line;
        return true;
    }

private:
    std::ostream& output_;
};

std::unique_ptr<unsigned char[]> allocate(std::size_t size)
{
    return std::make_unique<unsigned char[]>(size);
}

// A scanner of that class, which prints on a stream.
template <typename Base>
class Printing : public Base
{
public:
    explicit Printing(std::ostream& stream) : Base("", LaidOutTable::name) { this->out = &stream; }
};

class Scanner : public Printing<Quask::QuaskHeaderScanner>
{
public:
    using Printing::Printing;

    // doScan() in the plain style and with empty buckets, without batches.
    int scanOneByOne()
    {
        Quask::QuaskReaderGeneric reader(LaidOutTable::name);
        if (!Quask::prepareScan(reader, LaidOutTable::name, std::cout)) {
            return 1;
        }
        unsigned const valueSize = reader.valueFormat().size;
        OneByOne lines(
            Quask::makeValueBuffer(*handler, valueSize, reader.mappedSlotBytes(), allocate),
            valueSize, *out);
        Quask::walkAll(reader, lines, *out);
        *out << "Lookaside hits: " << reader.lookasideHits()
             << "\nChain restarts: " << reader.chainRestarts() << "\n";
        return 0;
    }
};

std::string const endOfLongReport = "long report";

// Runs the job on a fresh table. How it ended: its result, or the exception that it threw. `text`
// becomes what it printed.
template <typename AnyScanner = Scanner, typename Job>
std::string endOf(LaidOutTable& files, EditedTable const& table, std::string& text, Job const& job)
{
    static auto& messages = *new Sink;
    std::cout.rdbuf(&messages);
    std::cerr.rdbuf(&messages);
    messages.clear();
    Sink report;
    std::ostream out(&report);
    files.begin(table);
    AnyScanner scanner(out);
    std::string end;
    try {
        end = std::to_string(job(scanner));
    } catch (Dovan::Exception const& exception) {
        end = exception.msg();
    } catch (Sink::Full const&) {
        end = endOfLongReport;
    }
    text = report.text();
    return end;
}

// How the reports end as JSON; empty where that is not built.
std::string endAsJson([[maybe_unused]] LaidOutTable& files,
                      [[maybe_unused]] EditedTable const& table)
{
#if defined(QUASK_HAS_JSON)
    using JsonScanner = Printing<Quask::Json::JsonScanner>;
    std::string text;
    endOf<JsonScanner>(files, table, text,
                       [](JsonScanner& scanner) { return scanner.doGetHeadersJson(); });
    return endOf<JsonScanner>(files, table, text,
                              [](JsonScanner& scanner) { return scanner.doScanJson(true); });
#else
    return {};
#endif
}

// The tool ends the process quietly at a bus error in a mapped file, which can only be had by
// cutting the file. Nobody does that here: one that happens is a find, and the fuzzer must see it.
void leaveBusErrorsToTheFuzzer()
{
    struct sigaction former
    {};
    sigaction(SIGBUS, nullptr, &former);
    LaidOutTable files;
    QuaskFuzzing::Input const firstSoundTable(reinterpret_cast<std::uint8_t const*>("\1"), 1);
    EditedTable const table(firstSoundTable);
    std::string text;
    endOf(files, table, text, [](Scanner& scanner) { return scanner.doGetHeaders(); });
    sigaction(SIGBUS, &former, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    [[maybe_unused]] static bool const prepared = (leaveBusErrorsToTheFuzzer(), true);
    static LaidOutTable files;
    EditedTable const table({data, size});
    std::string text;
    std::string otherText;
    std::string const pretty = endOf(files, table, text, [](Scanner& scanner) {
        return scanner.doScan(QuaskTextify::Pretty, false);
    });
    endOf(files, table, text, [](Scanner& scanner) { return scanner.doGetHeaders(); });
    std::string const json = endAsJson(files, table);
    std::string const plain = endOf(files, table, text, [](Scanner& scanner) {
        return scanner.doScan(QuaskTextify::Plain, true);
    });
    std::string const oneByOne =
        endOf(files, table, otherText, [](Scanner& scanner) { return scanner.scanOneByOne(); });
    if (!table.liveEdits.empty() || plain == endOfLongReport) {
        return 0;
    }
    for (std::string const& other : {pretty, json}) {
        if (other != endOfLongReport && !other.empty() && other != plain) {
            std::abort();
        }
    }
    if (plain != oneByOne || text != otherText) {
        std::abort();
    }
    return 0;
}
