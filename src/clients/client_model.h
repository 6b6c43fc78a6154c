#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "clients/shared_text.h"

namespace Quask {

// What a process does with a table.
enum class QuaskType
{
    writer = 0,
    shadow = 1,
    reader = 2,
    keyshadow = 3,
};

}  // namespace Quask

namespace Quask::Model {

// One process in one role. Ordered by pid, then the two names byte by byte. There is one for each
// mapping that speaks for the role, so those of one process share its names.
struct QuaskClient
{
    std::int32_t pid = 0;
    SharedText procName;  // name of the file that the process's first mapping is of
    SharedText command;   // from the process's command line; empty until it has been looked up

    // NOLINTNEXTLINE(modernize-use-nullptr): there is no pointer in it.
    friend auto operator<=>(QuaskClient const&, QuaskClient const&) = default;
};

// The figures of a table's headers.
struct HeaderInfo
{
    static constexpr std::uint32_t notAvailable = 0xFFFFFFFF;

    // Whether all five are available.
    bool isComplete() const;

    // Two lines: the four capacities, then the occupied slots; "NA" for a value not available.
    std::string print() const;

    std::uint32_t buckets = notAvailable;
    std::uint32_t primaryNotifications = notAvailable;
    std::uint32_t secondaryNotifications = notAvailable;
    std::uint32_t slots = notAvailable;  // capacity
    std::uint32_t occupiedSlots = notAvailable;
};

// One table with the processes that have it mapped. Ordered by its name alone.
class QuaskTable
{
public:
    using ClientList = std::vector<QuaskClient>;

    // Without a name, and without a list for any role.
    QuaskTable() = default;

    // `tablePath` is the directory of the table's files. Every role has an empty list.
    explicit QuaskTable(std::string const& tablePath);

    QuaskTable(std::string tablePath, ClientList const& writers, ClientList const& shadows,
               ClientList const& keyshadows, ClientList const& readers);

    // Whether any role has a client.
    bool hasClients() const;

    // The table's section of the client report: title, header figures, one line of clients per
    // role, an empty line. A role without a list is reported on standard error and has none.
    std::string print() const;

    // Prints the same text on `out`, a long one in pieces: it is never all in memory.
    void print(std::ostream& out) const;

    // The clients of one role, each followed by a space; "None" when there is none. A role without
    // a list is reported on standard error and has none.
    std::string printClients(QuaskType const& type) const;

    friend bool operator<(QuaskTable const& left, QuaskTable const& right)
    {
        return left.name < right.name;
    }

    std::string name;
    HeaderInfo headerInfo;
    std::map<QuaskType, ClientList> clients;
};

}  // namespace Quask::Model
