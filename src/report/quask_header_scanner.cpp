#include "report/quask_header_scanner.h"

#include <iostream>

#include "table/attach_together.h"
#include "table/header_text.h"
#include "table/vandral.h"

namespace Quask {

void QuaskTest::getHeaders(QuaskReaderGeneric const& reader, VandralReaderGeneric const& vandral,
                           std::string& buckets, std::string& slots, std::string& primary,
                           std::string& secondary)
{
    formatBucketsHeader(reader.liveBucketsHeader(), buckets);
    formatSlotsHeader(reader.liveSlotsHeader(), reader.readableSlotBytes(), slots);
    formatVandralHeader(Vandral::Header(*vandral.primaryHeader), primary);
    formatVandralHeader(Vandral::Header(*vandral.secondaryHeader), secondary);
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
    std::string buckets;
    std::string slots;
    std::string primary;
    std::string secondary;
    QuaskTest::getHeaders(reader, vandral, buckets, slots, primary, secondary);
    printHeaders(rootPath, buckets, slots, primary, secondary);
    closeOutput();
    return 0;
}

void QuaskHeaderScanner::printHeaders(RootPath const& rootPath, std::string const& buckets,
                                      std::string const& slots, std::string const& primary,
                                      std::string const& secondary)
{
    *out << "Quask table \"" << rootPath.directory() << "\"\n\n";
    *out << "Buckets header:" << buckets << std::endl;
    *out << "Slots header:" << slots << std::endl;
    *out << "Primary vandral header:" << primary << std::endl;
    *out << "Secondary vandral header:" << secondary << std::endl;
}

}  // namespace Quask
