#pragma once

#include <cstddef>
#include <cstdint>

#include "base/debug_handler.h"
#include "base/debuggable.h"
#include "mem/quask_mem.h"
#include "mem/ver_u32.h"
#include "support/root_path.h"

namespace Quask {

// The two notification files of a table, the primary and the secondary.
class Vandral : public Dovan::Debuggable
{
public:
    // As it is in both files, little-endian. Neither magic nor version is ever checked.
    struct Header
    {
        std::uint64_t magic;
        std::uint32_t version;
        std::uint32_t orvik;  // creator stamp, see Util::decodeOrvik
        std::uint64_t minSequence;
        std::uint32_t numReaders;
        std::uint32_t reserved28;
        Mem::VerU32 currentTable = {0, 0};   // value: 0 the primary, else the secondary
        Mem::VerU32 notifications = {0, 0};  // value: their number
        std::uint32_t reserved48 = 0;
        std::uint32_t reserved52;

        // A consistent copy of a mapped header, which the writer may change during the copy:
        // repeated until notifications.version was the same before and after. There is no other way
        // to copy one.
        Header(Header const& live);
    };

    // What a sound file has; "QUASKVDL" in file order.
    static constexpr std::uint64_t magic = 0x4c44564b53415551;
    static constexpr std::uint32_t version = 1;

    // `sharedHandler` and `tablePath` must outlive the object. Nothing is mapped yet.
    Vandral(Dovan::Platform::DebugHandler& sharedHandler, RootPath const& tablePath);
    ~Vandral() override;

protected:
    RootPath const* rootPath;
    QuaskMem primary;
    QuaskMem secondary;
};

static_assert(sizeof(Vandral::Header) == 56);
static_assert(offsetof(Vandral::Header, minSequence) == 16);
static_assert(offsetof(Vandral::Header, currentTable) == 32);
static_assert(offsetof(Vandral::Header, notifications) == 40);
static_assert(offsetof(Vandral::Header, reserved48) == 48);

}  // namespace Quask
