#include "report/quask_header_scanner.h"

#include <iostream>
#include <utility>

#include "table/attach_together.h"
#include "table/header_text.h"
#include "table/vandral.h"

namespace Quask {

QuaskTest::Headers QuaskTest::getHeaders(QuaskReaderGeneric const& reader,
                                         VandralReaderGeneric const& vandral)
{
    std::string buckets;
    formatBucketsHeader(reader.liveBucketsHeader(), buckets);
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is consistent.
    SlotTable<EmptyValue>::Header const slots(reader.liveSlotsHeader());
    Headers headers{std::move(buckets), {}, reader.lookasideValue(slots), {}, {}};
    formatSlotsHeader(slots, headers.slots);
    formatVandralHeader(Vandral::Header(*vandral.primaryHeader), headers.primary);
    formatVandralHeader(Vandral::Header(*vandral.secondaryHeader), headers.secondary);
    return headers;
}

QuaskHeaderScanner::~QuaskHeaderScanner() = default;

int QuaskHeaderScanner::doGetHeaders()
{
    std::string const name = tableNameText();
    QuaskReaderGeneric reader(name);
    if (!reader.attach()) {
        std::cerr << "Error attaching Quask reader for " << name << std::endl;
        return 1;
    }
    RootPath const rootPath(*handler, name, false);
    VandralReaderGeneric vandral(*handler, rootPath);
    auto const attachAll = [&] {
        return (reader.isAttached() || reader.attachOnce()) && vandral.attach();
    };
    if (!attachTogether(reader.channel(), attachAll, reader, vandral)) {
        std::cerr << "Error attaching " << (reader.isAttached() ? "Vandral" : "Quask")
                  << " reader for " << name << std::endl;
        return 1;
    }
    printHeaders(rootPath, QuaskTest::getHeaders(reader, vandral));
    closeOutput();
    return 0;
}

void QuaskHeaderScanner::printHeaders(RootPath const& rootPath, QuaskTest::Headers const& headers)
{
    *out << "Quask table \"" << rootPath.directory() << "\"\n\n";
    *out << "Buckets header:" << headers.buckets << std::endl;
    *out << "Slots header:" << headers.slots;
    headers.lookasideValue.printTo(*out);
    *out << "\n" << std::endl;
    *out << "Primary vandral header:" << headers.primary << std::endl;
    *out << "Secondary vandral header:" << headers.secondary << std::endl;
}

}  // namespace Quask
