#pragma once

#include "base/debug_handler.h"
#include "mem/quask_mem.h"
#include "support/root_path.h"
#include "table/vandral.h"

namespace Quask {

// Looks at the headers of a table's two notification files, which their owner keeps changing. One
// thread.
class VandralReaderGeneric : public Vandral
{
public:
    VandralReaderGeneric(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& tablePath);
    ~VandralReaderGeneric() override;

    // Maps the first page of both files. False, with the reason at level 0, when one of them is
    // missing, empty or cannot be mapped; the primary may be mapped then. Checks nothing of their
    // contents, nor that they hold a whole header: what a file lacks of its page reads as zero.
    bool attach();

    // Unmaps both files.
    void detach();

    // Whether the mapped files are still those that have the names; true while none is mapped.
    bool isCurrent() const { return primary.isCurrent() && secondary.isCurrent(); }

    // Whether a page of the files could not be read and was treated as zeros.
    bool hasUnreadablePage() const
    {
        return primary.hasUnreadablePage() || secondary.hasUnreadablePage();
    }

    // In the mappings, and null until attach() has mapped the file. To be copied with Header's copy
    // constructor, which gives a consistent state.
    Header const* primaryHeader = nullptr;
    Header const* secondaryHeader = nullptr;

private:
    bool attachOne(QuaskMem& mem, Header const*& header, unsigned number, char const* word);
};

}  // namespace Quask
