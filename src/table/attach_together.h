#pragma once

#include "base/debug_handler.h"

namespace Quask {

// Attaches the files that one report reads together, so that all of them are of one table. They are
// opened by their names, one after another, and a table may be replaced in between. Once all are
// attached, each name must still lead to the file that is mapped; then each has led there since its
// file was attached, and all of them did at one moment. Where one does not, all are attached again.
//
// `attachAll()` attaches, and says whether the report can go on; `readers` are what it attaches,
// each with isCurrent() and detach(). False when attachAll() said so, or, with the reason at level
// 1, when the files were replaced each time; some of them may be attached then.
template <typename AttachAll, typename... Readers>
bool attachTogether(Dovan::Platform::DebugHandler& handler, AttachAll attachAll,
                    Readers&... readers)
{
    constexpr int mostAttempts = 100;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        if (!attachAll()) {
            return false;
        }
        if ((readers.isCurrent() && ...)) {
            return true;
        }
        (readers.detach(), ...);
    }
    Dovan::trace(handler, 1,
                 "attachTogether() the table's files were replaced while they were "
                 "being attached, attempts: ",
                 mostAttempts);
    return false;
}

}  // namespace Quask
