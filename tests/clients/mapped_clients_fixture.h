#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "clients/recording_scanner.h"
#include "support/mapping_client.h"
#include "support/private_root.h"
#include "support/table_files.h"

namespace QuaskTesting {

inline std::string const figures =
    "Capacity: slots:1024 buckets:4 primary_notifications:0 secondary_notifications:0\n"
    "Occupied slots: 0\n";

class MappedClientsTest : public testing::Test
{
protected:
    using Arguments = std::vector<std::string>;

    MappedClientsTest()
    {
        setenv("J5_CHROOT", "1", 1);
        TableImage::of("int", 4).buckets(4).slots(8).writeTo(root, "feed");
    }

    ~MappedClientsTest() override { unsetenv("J5_CHROOT"); }

    // A client's argument: a file of the table "feed" or another, mapped "r" or "rw".
    std::string file(std::string const& name, std::string const& mode,
                     std::string const& tableName = "feed") const
    {
        return root.path() + "/" + tableName + "/" + name + ":" + mode;
    }

    Arguments writing(std::string const& table = "feed") const
    {
        return {file("slots", "rw", table), file("vandral.1", "rw", table)};
    }

    Arguments shadowing() const { return {file("vandral.1", "r"), file("slots", "r")}; }

    Arguments keyshadowing() const
    {
        return {file("orvik", "r"), file("vandral.1", "r"), file("slots", "r")};
    }

    static std::string shown(MappingClient const& client)
    {
        return "mapping_client-" + std::to_string(client.pid()) + "(mapping_client) ";
    }

    // What the report on the table says after its title and figures.
    std::string clientsOf(char const* table)
    {
        std::string const text =
            RecordingScanner(-1, table).reportOf(&Quask::QuaskClientScanner::doGetClientInfo);
        std::string const start = "Quask table \"" + root.path() + "/" + table + "\"\n" + figures;
        EXPECT_TRUE(text.starts_with(start)) << text;
        return text.substr(std::min(start.size(), text.size()));
    }

    static std::string roles(std::string const& writer, std::string const& shadow,
                             std::string const& keyshadow, std::string const& reader)
    {
        return "Writer: " + writer + "\nShadow: " + shadow + "\nKeyshadow: " + keyshadow +
               "\nReader: " + reader + "\n\n";
    }

    QuaskTesting::PrivateRoot root;
};

}  // namespace QuaskTesting
