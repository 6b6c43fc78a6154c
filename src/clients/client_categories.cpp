// Which role a process has for a table, and its name.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/debug_handler.h"
#include "clients/client_model.h"
#include "clients/quask_client_scanner.h"
#include "clients/require.h"
#include "clients/tokens.h"
#include "support/util.h"

namespace Quask {

using Dovan::trace;

bool QuaskClientScanner::categorizeClient(std::string const& info, QuaskClientList& writers,
                                          QuaskClientList& keyShadowReaders,
                                          QuaskClientList& shadowAndKeyShadow,
                                          QuaskClientList& allReaders) const
{
    std::string const pid = getToken(info, 1, " ");
    std::string const procName = getToken(info, 2, " ");
    std::string const permissions = getToken(info, 3, " ");
    std::string const fileType = getToken(info, 4, " ");
    if (fileType.empty()) {
        trace(*handler, 0, "Failed to tokenize: ", info);
        return true;
    }
    auto const add = [&](QuaskClientList& clients, char const* text) {
        trace(*handler, 9, text, procName);
        // A pid that is not a number (a process directory such as "self") becomes 0.
        auto const number = static_cast<std::int32_t>(std::strtol(pid.c_str(), nullptr, 10));
        // The records of a process come one after the other, and share its name.
        bool const isNew = clients.empty() || clients.back().procName.text() != procName;
        clients.push_back(
            {number, isNew ? Model::SharedText(procName) : clients.back().procName, {}});
    };
    bool const readOnly = permissions.starts_with("r-");
    if (fileType == "vandral.1") {
        if (permissions.starts_with("rw")) {
            add(writers, "adding writer: ");
        } else if (readOnly) {
            add(shadowAndKeyShadow, "adding shadow/keyshadow reader: ");
        }
    } else if (fileType == "slots") {
        if (readOnly) {
            add(allReaders, "adding a reader of some type: ");
        }
    } else if (fileType == "orvik") {
        if (readOnly) {
            add(keyShadowReaders, "adding keyshadow reader: ");
        }
    } else {
        trace(*handler, 0, "Unexpected quask file ", fileType);
        return true;
    }
    return false;
}

void QuaskClientScanner::computeSetDifference(QuaskClientList& minuend, QuaskClientList& subtrahend,
                                              QuaskClientList& result) const
{
    std::ranges::sort(minuend);
    std::ranges::sort(subtrahend);
    if (minuend.empty() || subtrahend.empty()) {
        result = minuend;
        return;
    }
    std::ranges::set_difference(minuend, subtrahend, std::inserter(result, result.begin()));
}

void QuaskClientScanner::determineReaders(QuaskClientList& keyShadowReaders,
                                          QuaskClientList& shadowAndKeyShadow,
                                          QuaskClientList& allReaders,
                                          QuaskClientList& shadowReaders,
                                          QuaskClientList& passiveReaders) const
{
    // Comparing the counts is a deliberate shortcut: where there are no more of one list than of
    // the other, no difference is taken, even if the lists name different processes.
    if (shadowAndKeyShadow.size() > keyShadowReaders.size()) {
        trace(*handler, 9,
              "computing set difference: shadowAndKeyShadow.size: ", shadowAndKeyShadow.size(),
              ", keyShadowReaders.size: ", keyShadowReaders.size(),
              ", shadowReaders.size: ", shadowReaders.size());
        computeSetDifference(shadowAndKeyShadow, keyShadowReaders, shadowReaders);
    }
    QuaskClientList keyShadowAndPassive;
    trace(*handler, 9, "computing set difference: allReaders.size: ", allReaders.size(),
          ", shadowReaders.size: ", shadowReaders.size(),
          ", keyShadowAndPassive.size: ", keyShadowAndPassive.size());
    computeSetDifference(allReaders, shadowReaders, keyShadowAndPassive);
    if (keyShadowAndPassive.size() > keyShadowReaders.size()) {
        trace(*handler, 9,
              "computing set difference: keyShadowAndPassive.size: ", keyShadowAndPassive.size(),
              ", keyShadowReaders.size: ", keyShadowReaders.size(),
              ", passiveReaders.size: ", passiveReaders.size());
        computeSetDifference(keyShadowAndPassive, keyShadowReaders, passiveReaders);
    }
}

void QuaskClientScanner::populateCommandNames(QuaskClientList& writers,
                                              QuaskClientList& shadowReaders,
                                              QuaskClientList& keyShadowReaders,
                                              QuaskClientList& readers,
                                              CommandCache& commands) const
{
    doPopulateCommandNames(writers, commands);
    doPopulateCommandNames(shadowReaders, commands);
    doPopulateCommandNames(keyShadowReaders, commands);
    doPopulateCommandNames(readers, commands);
}

void QuaskClientScanner::doPopulateCommandNames(QuaskClientList& clients,
                                                CommandCache& commands) const
{
    for (Model::QuaskClient& client : clients) {
        require(client.pid != 0, "pid");
        auto const [command, isNew] = commands.try_emplace(client.pid);
        if (isNew) {
            std::string const commandLine = Util::readCmdline(*handler, client.pid);
            std::string_view const program =
                std::string_view(commandLine).substr(0, commandLine.find(' '));
            command->second = std::string(afterLastSlash(program));
            trace(*handler, 5, "Extracted command ", command->second.text(), " for pid ",
                  client.pid);
        } else {
            trace(*handler, 5, "Found command ", command->second.text(), " in cache for ",
                  client.pid);
        }
        client.command = command->second;
    }
}

}  // namespace Quask
