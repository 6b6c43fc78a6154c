#pragma once

#include <cstddef>
#include <vector>

#include <sys/types.h>

#include "clients/shared_text.h"

namespace Quask::Stat {

// The part that a process has in a table, by what it has mapped. A process has one: the first of
// these that applies.
enum class Role
{
    writer,     // vandral.1 for writing
    keyshadow,  // orvik for reading
    shadow,     // vandral.1 for reading
    reader,     // slots for reading
    none,       // slots for writing alone
};

// The role in a word, "none" for Role::none.
char const* roleText(Role role);

struct Client
{
    pid_t pid = 0;
    Role role = Role::none;
    bool isStale = false;       // it holds files that have been removed or replaced
    Model::SharedText command;  // as quask shows it
};

// What is known of the process that the header of the bucket file names as the table's owner.
enum class OwnerProcess
{
    unnamed,   // the header names none, or could not be read
    gone,      // there is no such process
    unknown,   // there is one that could not be looked into
    notWriter  // there is one; whether it is the writer shows in the clients
};

// The processes that have files of one table mapped.
struct TableClients
{
    std::vector<Client> clients;  // by pid; a process that is stale as well is there twice
    OwnerProcess owner = OwnerProcess::unnamed;
    Model::SharedText ownerCommand;  // of a process that could not be looked into

    // Those that are not stale and have this role.
    std::size_t count(Role role) const;

    std::size_t staleCount() const;
};

}  // namespace Quask::Stat
