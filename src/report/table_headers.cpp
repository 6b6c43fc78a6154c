#include "report/table_headers.h"

#include <iostream>

#include "support/root_path.h"
#include "table/attach_together.h"

namespace Quask {

TableHeaders QuaskTest::getHeaders(QuaskReaderGeneric const& reader,
                                   VandralReaderGeneric const& vandral)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is consistent.
    SlotTable<EmptyValue>::Header const slots(reader.liveSlotsHeader());
    return TableHeaders{.directory = {},
                        .buckets = BucketTable::Header(reader.liveBucketsHeader()),
                        .slots = slots,
                        .lookasideValue = reader.lookasideValue(slots),
                        .primary = Vandral::Header(*vandral.primaryHeader),
                        .secondary = Vandral::Header(*vandral.secondaryHeader)};
}

std::optional<TableHeaders> readTableHeaders(Dovan::Platform::DebugHandler& handler,
                                             std::string const& name)
{
    QuaskReaderGeneric reader(name);
    if (!reader.attach()) {
        std::cerr << "Error attaching Quask reader for " << name << std::endl;
        return std::nullopt;
    }
    RootPath const rootPath(handler, name, false);
    VandralReaderGeneric vandral(handler, rootPath);
    auto const attachAll = [&] {
        return (reader.isAttached() || reader.attachOnce()) && vandral.attach();
    };
    if (!attachTogether(reader.channel(), attachAll, reader, vandral)) {
        std::cerr << "Error attaching " << (reader.isAttached() ? "Vandral" : "Quask")
                  << " reader for " << name << std::endl;
        return std::nullopt;
    }
    TableHeaders headers = QuaskTest::getHeaders(reader, vandral);
    headers.directory = rootPath.directory();
    return headers;
}

}  // namespace Quask
