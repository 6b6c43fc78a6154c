// Scans a table and reports its headers, whatever its files hold and whatever its writer does
// meanwhile; see edited_table.h for what an input means. Described ends are a result and an
// exception of the tool's own. Where nobody changes the table, the style of the values must not
// matter for how the scan ends.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <streambuf>
#include <string>

#include "base/exception.h"
#include "edited_table.h"
#include "laid_out_table.h"
#include "report/quask_header_scanner.h"

namespace {

using Quask::QuaskTextify;
using QuaskFuzzing::EditedTable;
using QuaskFuzzing::LaidOutTable;

// Takes any text, up to a length that shows that the report goes on as it should.
class Sink : public std::streambuf
{
public:
    struct Full
    {};

    void clear() { taken_ = 0; }

protected:
    std::streamsize xsputn(char const* /*text*/, std::streamsize count) override
    {
        taken_ += count;
        if (taken_ > maximum) {
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
    static constexpr std::streamsize maximum = 1 << 20;

    std::streamsize taken_ = 0;
};

class Scanner : public Quask::QuaskHeaderScanner
{
public:
    explicit Scanner(std::ostream& stream) : QuaskHeaderScanner("", LaidOutTable::name)
    {
        out = &stream;
    }
};

std::string const endOfLongReport = "long report";

// Runs the job on a fresh table. How it ended: its result, or the exception that it threw.
template <typename Job>
std::string endOf(LaidOutTable& files, EditedTable const& table, Job const& job)
{
    static auto& sink = *new Sink;
    // The tool's messages.
    std::cout.rdbuf(&sink);
    std::cerr.rdbuf(&sink);
    sink.clear();
    std::ostream out(&sink);
    files.begin(table);
    Scanner scanner(out);
    try {
        return std::to_string(job(scanner));
    } catch (Dovan::Exception const& exception) {
        return exception.msg();
    } catch (Sink::Full const&) {
        return endOfLongReport;
    }
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
    endOf(files, table, [](Scanner& scanner) { return scanner.doGetHeaders(); });
    sigaction(SIGBUS, &former, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    [[maybe_unused]] static bool const prepared = (leaveBusErrorsToTheFuzzer(), true);
    static LaidOutTable files;
    EditedTable const table({data, size});
    std::string const plain = endOf(
        files, table, [](Scanner& scanner) { return scanner.doScan(QuaskTextify::Plain, true); });
    std::string const pretty = endOf(
        files, table, [](Scanner& scanner) { return scanner.doScan(QuaskTextify::Pretty, false); });
    endOf(files, table, [](Scanner& scanner) { return scanner.doGetHeaders(); });
    bool const isComparable =
        table.liveEdits.empty() && plain != endOfLongReport && pretty != endOfLongReport;
    if (isComparable && plain != pretty) {
        std::abort();
    }
    return 0;
}
