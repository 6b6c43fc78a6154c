#include "report/quask_header_scanner.h"

#include <optional>
#include <string>

#include "table/header_text.h"

namespace Quask {
namespace {

template <typename Header>
std::string textOf(Header const& header, void (*format)(Header const&, std::string&))
{
    std::string text;
    format(header, text);
    return text;
}

}  // namespace

QuaskHeaderScanner::~QuaskHeaderScanner() = default;

int QuaskHeaderScanner::doGetHeaders()
{
    std::optional<TableHeaders> const headers = readTableHeaders(*handler, tableNameText());
    if (!headers) {
        return 1;
    }
    printHeaders(*headers);
    closeOutput();
    return 0;
}

void QuaskHeaderScanner::printHeaders(TableHeaders const& headers)
{
    using QuaskTest::formatVandralHeader;
    *out << "Quask table \"" << headers.directory << "\"\n\n";
    *out << "Buckets header:" << textOf(headers.buckets, QuaskTest::formatBucketsHeader)
         << std::endl;
    *out << "Slots header:" << textOf(headers.slots, QuaskTest::formatSlotsHeader);
    headers.lookasideValue.printTo(*out);
    *out << "\n" << std::endl;
    *out << "Primary vandral header:" << textOf(headers.primary, formatVandralHeader) << std::endl;
    *out << "Secondary vandral header:" << textOf(headers.secondary, formatVandralHeader)
         << std::endl;
}

}  // namespace Quask
