#include "table/vandral_reader_generic.h"

#include "support/mem_local.h"

namespace Quask {

VandralReaderGeneric::VandralReaderGeneric(Dovan::Platform::DebugHandler& sharedHandler,
                                           RootPath const& tablePath)
    : Vandral(sharedHandler, tablePath)
{}

VandralReaderGeneric::~VandralReaderGeneric() = default;

bool VandralReaderGeneric::attach()
{
    return attachOne(primary, primaryHeader, 0, "primary") &&
           attachOne(secondary, secondaryHeader, 1, "secondary");
}

void VandralReaderGeneric::detach()
{
    primary.detach();
    secondary.detach();
    primaryHeader = secondaryHeader = nullptr;
}

bool VandralReaderGeneric::attachOne(QuaskMem& mem, Header const*& header, unsigned number,
                                     char const* word)
{
    if (mem.memSize() == 0) {
        Dovan::trace(*handler, 0, "VandralReaderGeneric::attach(", number,
                     ") no shared memory region");
    } else {
        auto const onePage = static_cast<unsigned>(Mem::pageSize_);
        header = static_cast<Header const*>(mem.attach(onePage, Mem::Mode::read));
    }
    if (header == nullptr) {
        // Two spaces before "vandral": the text is fixed.
        Dovan::trace(*handler, 0, "VandralReaderGeneric::attach() failed to attach to ", word, " ",
                     " vandral table");
        return false;
    }
    return true;
}

}  // namespace Quask
