#include <gtest/gtest.h>

#include <unistd.h>

#include "clients/recording_scanner.h"
#include "support/mapping_client.h"

namespace {

using QuaskTesting::RecordingScanner;
using Clients = Quask::QuaskClientScanner::QuaskClientList;
using Lines = std::vector<std::string>;

// The list as "PID(NAME) ", with the command first where there is one.
std::string textOf(Clients const& clients)
{
    std::string text;
    for (auto const& client : clients) {
        std::string const command(client.command.text());
        text += command + (command.empty() ? "" : "-") + std::to_string(client.pid) + "(" +
                std::string(client.procName.text()) + ") ";
    }
    return text;
}

Clients clientsOf(std::vector<std::int32_t> const& pids)
{
    Clients clients;
    for (std::int32_t const pid : pids) {
        clients.push_back({pid, "p", ""});
    }
    return clients;
}

class ClientCategoriesTest : public testing::Test
{
protected:
    bool categorize(std::string const& info)
    {
        return scanner.categorizeClient(info, writers, keyShadowReaders, shadowAndKeyShadow,
                                        allReaders);
    }

    // Sorts the clients of these records into roles.
    void determine(Lines const& infos)
    {
        for (std::string const& info : infos) {
            EXPECT_FALSE(categorize(info)) << info;
        }
        scanner.takeLog();
        scanner.determineReaders(keyShadowReaders, shadowAndKeyShadow, allReaders, shadowReaders,
                                 passiveReaders);
    }

    RecordingScanner scanner;
    Clients writers;
    Clients keyShadowReaders;
    Clients shadowAndKeyShadow;
    Clients allReaders;
    Clients shadowReaders;
    Clients passiveReaders;
};

TEST_F(ClientCategoriesTest, FileAndPermissionsDecideTheList)
{
    EXPECT_FALSE(categorize("1 w rw-s vandral.1 "));
    EXPECT_FALSE(categorize("2 s r--s vandral.1 "));
    EXPECT_FALSE(categorize("3 r r--s slots "));
    EXPECT_FALSE(categorize("4 k r--p orvik "));
    EXPECT_EQ(textOf(writers), "1(w) ");
    EXPECT_EQ(textOf(shadowAndKeyShadow), "2(s) ");
    EXPECT_EQ(textOf(allReaders), "3(r) ");
    EXPECT_EQ(textOf(keyShadowReaders), "4(k) ");
    EXPECT_EQ(scanner.takeLog(),
              (Lines{"9 adding writer: w", "9 adding shadow/keyshadow reader: s",
                     "9 adding a reader of some type: r", "9 adding keyshadow reader: k"}));
}

TEST_F(ClientCategoriesTest, OtherPermissionsAddNothingAndAreNotAFailure)
{
    for (char const* const info :
         {"1 w rw-s slots ", "1 w rw-s orvik ", "1 w --xp vandral.1 ", "1 w -w-s vandral.1 ",
          "1 w ---p slots ", "1 w r orvik ", "1 w w vandral.1 "}) {
        EXPECT_FALSE(categorize(info)) << info;
    }
    EXPECT_EQ(textOf(writers) + textOf(shadowAndKeyShadow) + textOf(allReaders) +
                  textOf(keyShadowReaders),
              "");
    EXPECT_EQ(scanner.takeLog(), Lines{});
}

TEST_F(ClientCategoriesTest, ARecordThatLacksAFieldIsAFailure)
{
    for (std::string const info : {"", "1", "1 w ", "1 w rw-s ", "   "}) {
        EXPECT_TRUE(categorize(info)) << info;
        EXPECT_EQ(scanner.takeLog(), Lines{"0 Failed to tokenize: " + info});
    }
}

TEST_F(ClientCategoriesTest, AnUnknownFileIsAFailure)
{
    EXPECT_TRUE(categorize("1 w rw-s vandral.2 "));
    EXPECT_EQ(scanner.takeLog(), Lines{"0 Unexpected quask file vandral.2"});
}

TEST_F(ClientCategoriesTest, APidThatIsNotANumberBecomesZero)
{
    EXPECT_FALSE(categorize("self w rw-s vandral.1 "));
    EXPECT_FALSE(categorize("12x w rw-s vandral.1 "));
    EXPECT_EQ(textOf(writers), "0(w) 12(w) ");
}

TEST_F(ClientCategoriesTest, TheRecordsOfAProcessShareItsName)
{
    EXPECT_FALSE(categorize("1 w r--s slots "));
    EXPECT_FALSE(categorize("1 w r--s slots "));
    EXPECT_FALSE(categorize("2 x r--s slots "));
    EXPECT_EQ(textOf(allReaders), "1(w) 1(w) 2(x) ");
    EXPECT_EQ(allReaders.at(0).procName.text().data(), allReaders.at(1).procName.text().data());
}

TEST_F(ClientCategoriesTest, TheDifferenceIsSortedAndOneElementTakesAwayOne)
{
    Clients minuend = clientsOf({9, 3, 5, 3, 1});
    Clients subtrahend = clientsOf({5, 3, 2});
    Clients result;
    scanner.computeSetDifference(minuend, subtrahend, result);
    EXPECT_EQ(result, clientsOf({1, 3, 9}));
    EXPECT_EQ(minuend, clientsOf({1, 3, 3, 5, 9})) << "sorted in place";
    EXPECT_EQ(subtrahend, clientsOf({2, 3, 5})) << "sorted in place";
}

TEST_F(ClientCategoriesTest, TheDifferenceGoesBeforeWhatTheResultHeld)
{
    Clients minuend = clientsOf({2, 1});
    Clients subtrahend = clientsOf({2});
    Clients result = clientsOf({7, 6});
    scanner.computeSetDifference(minuend, subtrahend, result);
    EXPECT_EQ(result, clientsOf({1, 7, 6}));
}

TEST_F(ClientCategoriesTest, WithAnEmptyListTheResultBecomesTheSortedMinuend)
{
    Clients minuend = clientsOf({2, 1});
    Clients nobody;
    Clients result = clientsOf({7});
    scanner.computeSetDifference(minuend, nobody, result);
    EXPECT_EQ(result, clientsOf({1, 2}));
    scanner.computeSetDifference(nobody, minuend, result);
    EXPECT_EQ(result, Clients{});
}

TEST_F(ClientCategoriesTest, ClientsAreTheSameWhenPidAndNameAre)
{
    Clients minuend{{1, "a", ""}, {1, "b", ""}};
    Clients subtrahend{{1, "b", ""}, {2, "a", ""}};
    Clients result;
    scanner.computeSetDifference(minuend, subtrahend, result);
    EXPECT_EQ(textOf(result), "1(a) ");
}

TEST_F(ClientCategoriesTest, AProcessThatMapsEverythingWritableIsAWriterAlone)
{
    determine({"1 w rw-s slots ", "1 w rw-s vandral.1 "});
    EXPECT_EQ(textOf(writers), "1(w) ");
    EXPECT_EQ(textOf(shadowReaders) + textOf(keyShadowReaders) + textOf(passiveReaders), "");
}

TEST_F(ClientCategoriesTest, ShadowKeyshadowAndPlainReadersAreSeparated)
{
    determine({"1 P r--s vandral.1 ", "1 P r--s slots ", "2 K r--s vandral.1 ", "2 K r--s orvik ",
               "2 K r--s slots ", "3 R r--s slots "});
    EXPECT_EQ(textOf(shadowReaders), "1(P) ");
    EXPECT_EQ(textOf(keyShadowReaders), "2(K) ");
    EXPECT_EQ(textOf(passiveReaders), "3(R) ");
    EXPECT_EQ(scanner.takeLog(),
              (Lines{"9 computing set difference: shadowAndKeyShadow.size: 2, "
                     "keyShadowReaders.size: 1, shadowReaders.size: 0",
                     "9 computing set difference: allReaders.size: 3, shadowReaders.size: 1, "
                     "keyShadowAndPassive.size: 0",
                     "9 computing set difference: keyShadowAndPassive.size: 2, "
                     "keyShadowReaders.size: 1, passiveReaders.size: 0"}));
}

TEST_F(ClientCategoriesTest, AProcessThatMapsVandralAndNoOrvikIsAShadowReader)
{
    determine({"1 K r--s orvik ", "1 K r--s vandral.1 ", "2 S r--s vandral.1 "});
    EXPECT_EQ(textOf(shadowReaders), "2(S) ");
}

TEST_F(ClientCategoriesTest, ASecondOrvikMappingHidesAShadowReader)
{
    determine({"1 K r--s orvik ", "1 K r--s orvik ", "1 K r--s vandral.1 ", "2 S r--s vandral.1 "});
    EXPECT_EQ(textOf(shadowReaders), "");
    EXPECT_EQ(textOf(keyShadowReaders), "1(K) 1(K) ");
}

TEST_F(ClientCategoriesTest, PlainReadersAreHiddenWhereKeyshadowReadersAreNotOutnumbered)
{
    determine({"1 K r--s orvik ", "2 R r--s slots "});
    EXPECT_EQ(textOf(passiveReaders), "");
    EXPECT_EQ(scanner.takeLog(), Lines{"9 computing set difference: allReaders.size: 1, "
                                       "shadowReaders.size: 0, keyShadowAndPassive.size: 0"});
}

TEST_F(ClientCategoriesTest, SlotsMappedTwiceKeepAShadowReaderAmongThePlainOnes)
{
    determine({"1 S r--s slots ", "1 S r--s slots ", "1 S r--s vandral.1 "});
    EXPECT_EQ(textOf(shadowReaders), "1(S) ");
    EXPECT_EQ(textOf(passiveReaders), "1(S) ");
}

TEST_F(ClientCategoriesTest, WritersStayInTheOrderFoundAndReadersComeByTheirPids)
{
    determine({"30 w rw-s vandral.1 ", "4 w rw-s vandral.1 ", "20 s r--s vandral.1 ",
               "3 s r--s vandral.1 ", "11 r r--s slots ", "9 r r--s slots "});
    EXPECT_EQ(textOf(writers), "30(w) 4(w) ");
    EXPECT_EQ(textOf(shadowReaders), "3(s) 20(s) ");
    EXPECT_EQ(textOf(passiveReaders), "9(r) 11(r) ");
}

TEST_F(ClientCategoriesTest, KeyshadowReadersStayInTheOrderFoundUnlessADifferenceIsTaken)
{
    determine({"2 k r--s orvik ", "1 k r--s orvik "});
    EXPECT_EQ(textOf(keyShadowReaders), "2(k) 1(k) ");
    determine({"5 s r--s vandral.1 ", "6 s r--s vandral.1 ", "7 s r--s vandral.1 "});
    EXPECT_EQ(textOf(keyShadowReaders), "1(k) 2(k) ");
}

class CommandNamesTest : public testing::Test
{
protected:
    int const self = static_cast<int>(getpid());
    RecordingScanner scanner;
    Quask::QuaskClientScanner::CommandCache commands;
};

TEST_F(CommandNamesTest, TheCommandIsTheLastPartOfTheProgramsPath)
{
    Clients clients{{self, "p", ""}};
    scanner.doPopulateCommandNames(clients, commands);
    EXPECT_EQ(clients.at(0).command.text(), "clients_test");
    EXPECT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[self].text(), "clients_test");
    EXPECT_EQ(scanner.takeLog(),
              Lines{"5 Extracted command clients_test for pid " + std::to_string(self)});
}

TEST_F(CommandNamesTest, ACommandLineOfOneWordIsAllOfIt)
{
    QuaskTesting::MappingClient const client(MAPPING_CLIENT, std::vector<std::string>());
    Clients clients{{client.pid(), "p", ""}};
    scanner.doPopulateCommandNames(clients, commands);
    EXPECT_EQ(clients.at(0).command.text(), "mapping_client");
}

TEST_F(CommandNamesTest, APidThatIsKnownIsNotReadAgain)
{
    commands[self] = "known";
    Clients clients{{self, "p", ""}};
    scanner.doPopulateCommandNames(clients, commands);
    EXPECT_EQ(clients.at(0).command.text(), "known");
    EXPECT_EQ(scanner.takeLog(),
              Lines{"5 Found command known in cache for " + std::to_string(self)});
}

TEST_F(CommandNamesTest, AProcessThatHasEndedHasTheEmptyCommand)
{
    Clients clients{{0x7fffffff, "p", ""}};
    scanner.doPopulateCommandNames(clients, commands);
    EXPECT_EQ(clients.at(0).command.text(), "");
    EXPECT_EQ(scanner.takeLog(), Lines{"5 Extracted command  for pid 2147483647"});
}

TEST_F(CommandNamesTest, TheListsAreNamedInTheOrderOfTheRolesWithOneCache)
{
    commands = {{1, "w"}, {2, "s"}, {3, "k"}, {4, "r"}};
    Clients writers = clientsOf({1});
    Clients shadows = clientsOf({2});
    Clients keyshadows = clientsOf({3, 1});
    Clients readers = clientsOf({4});
    scanner.populateCommandNames(writers, shadows, keyshadows, readers, commands);
    EXPECT_EQ(textOf(writers) + textOf(shadows) + textOf(keyshadows) + textOf(readers),
              "w-1(p) s-2(p) k-3(p) w-1(p) r-4(p) ");
    EXPECT_EQ(scanner.takeLog(),
              (Lines{"5 Found command w in cache for 1", "5 Found command s in cache for 2",
                     "5 Found command k in cache for 3", "5 Found command w in cache for 1",
                     "5 Found command r in cache for 4"}));
}

TEST_F(CommandNamesTest, AProcessInTwoRolesIsReadOnce)
{
    Clients writers{{self, "p", ""}};
    Clients readers{{self, "p", ""}};
    Clients nobody;
    scanner.populateCommandNames(writers, nobody, nobody, readers, commands);
    EXPECT_EQ(readers.at(0).command.text(), "clients_test");
    EXPECT_EQ(scanner.takeLog(),
              (Lines{"5 Extracted command clients_test for pid " + std::to_string(self),
                     "5 Found command clients_test in cache for " + std::to_string(self)}));
}

TEST_F(CommandNamesTest, AllClientsOfAProcessShareItsCommand)
{
    Clients writers{{self, "p", ""}, {self, "p", ""}};
    Clients readers{{self, "p", ""}};
    scanner.doPopulateCommandNames(writers, commands);
    scanner.doPopulateCommandNames(readers, commands);
    char const* const command = commands.at(self).text().data();
    EXPECT_EQ(writers.at(0).command.text().data(), command);
    EXPECT_EQ(writers.at(1).command.text().data(), command);
    EXPECT_EQ(readers.at(0).command.text().data(), command);
}

TEST(CommandNamesDeathTest, APidOfZeroEndsTheProgram)
{
    RecordingScanner scanner;
    Clients clients{{0, "p", ""}};
    Quask::QuaskClientScanner::CommandCache commands;
    EXPECT_EXIT(scanner.doPopulateCommandNames(clients, commands), testing::KilledBySignal(SIGABRT),
                "^QuaskClientScanner: assertion failed: pid\n$");
}

}  // namespace
