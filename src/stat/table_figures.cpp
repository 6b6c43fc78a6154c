#include "stat/table_figures.h"

#include <cstddef>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/descriptor.h"
#include "support/open_without_links.h"
#include "support/regular_file.h"
#include "support/root_path.h"
#include "support/watched_mapping.h"
#include "table/attach_together.h"
#include "table/quask_reader_generic.h"
#include "table/vandral_reader_generic.h"

namespace Quask::Stat {
namespace {

void examineFiles(std::string const& directory, TableFigures& figures)
{
    figures.files = {};
    figures.fileBytes = 0;
    Dovan::Descriptor const opened = Mem::openWithoutLinks(directory, O_PATH | O_DIRECTORY);
    if (!opened.isOpen()) {
        return;
    }
    for (std::size_t i = 0; i < tableFileNames.size(); ++i) {
        struct stat status = {};
        if (fstatat(opened.number(), tableFileNames.at(i), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            figures.files.at(i) = identityOf(status);
            figures.fileBytes += static_cast<std::uint64_t>(status.st_size);
        }
    }
}

// Why the files could not be attached, as far as it shows now.
std::string whyNotAttached(std::string const& directory)
{
    for (std::size_t i = 0; i < 4; ++i) {  // orvik is for clients only
        std::string const name = tableFileNames.at(i);
        std::string failure;
        Mem::RegularFile const file =
            Mem::RegularFile::openForReading(directory + "/" + name, failure);
        if (!file.isOpen()) {
            return name + ": " + failure;
        }
        if (file.size() == 0) {
            return name + ": the file is empty";
        }
    }
    return "the files were replaced while they were being opened";
}

// Whether the slot file holds the slots that its header counts. The writer lengthens the file
// before it counts them.
std::string whyTooShort(SlotTable<EmptyValue>::Header const& header, std::uint64_t fileSize)
{
    std::uint64_t const wanted = SlotTable<EmptyValue>::fixedSize +
                                 header.slotSize * (std::uint64_t{header.mappedSlots.value} + 1);
    if (fileSize >= wanted) {
        return {};
    }
    return "slots: " + std::to_string(fileSize) + " bytes, which is too short for " +
           std::to_string(header.mappedSlots.value) + " slots";
}

void readMain(QuaskReaderGeneric& reader, TableFigures& figures)
{
    if (!reader.validate(figures.problem)) {
        return;
    }
    BucketTable::Header const buckets(reader.liveBucketsHeader());
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is consistent.
    SlotTable<EmptyValue>::Header const slots(reader.liveSlotsHeader());
    figures.problem = whyTooShort(slots, reader.slotFileSize());
    if (figures.problem.empty()) {
        figures.main = MainHeaders{buckets, slots};
    }
}

}  // namespace

bool TableFigures::isMixed() const
{
    if (!main || !notifications) {
        return false;
    }
    std::uint32_t const stamp = main->buckets.orvik;
    return main->slots.orvik != stamp || notifications->primary.orvik != stamp ||
           notifications->secondary.orvik != stamp;
}

bool TableFigures::isFull() const
{
    return main && main->slots.freeHead == SlotRef::null &&
           main->slots.mappedSlots.value >= main->slots.maxSlots;
}

std::optional<std::uint64_t> TableFigures::percentUsed() const
{
    if (!main || main->slots.maxSlots == 0) {
        return std::nullopt;
    }
    return std::uint64_t{100} * main->slots.occupiedSlots / main->slots.maxSlots;
}

std::optional<std::uint64_t> TableFigures::updates() const
{
    return main ? std::optional<std::uint64_t>(main->slots.lookaside.sequence / stepOfUpdate)
                : std::nullopt;
}

std::optional<std::uint64_t> TableFigures::notificationCount() const
{
    if (!notifications) {
        return std::nullopt;
    }
    return std::uint64_t{notifications->primary.notifications.value} +
           notifications->secondary.notifications.value;
}

TableFigures readTableFigures(std::string const& tableName)
{
    QuaskReaderGeneric reader(tableName);
    RootPath const rootPath(reader.channel(), tableName, false);
    VandralReaderGeneric vandral(reader.channel(), rootPath);
    TableFigures figures;
    Mem::UnreadableAsZeros const unreadableAsZeros;
    bool hasMain = false;
    bool hasVandral = false;
    auto const attachAll = [&] {
        hasMain = reader.attachOnce();
        hasVandral = vandral.attach();
        examineFiles(rootPath.directory(), figures);
        return true;
    };
    bool const areOfOneTable = attachTogether(reader.channel(), attachAll, reader, vandral);
    hasMain = hasMain && areOfOneTable;
    hasVandral = hasVandral && areOfOneTable;
    if (hasMain) {
        readMain(reader, figures);
    }
    if (hasVandral) {
        figures.notifications = NotificationHeaders{Vandral::Header(*vandral.primaryHeader),
                                                    Vandral::Header(*vandral.secondaryHeader)};
    }
    if (reader.hasUnreadablePage()) {
        figures.main.reset();
        figures.problem = "a page of buckets or slots could not be read";
    } else if (vandral.hasUnreadablePage()) {
        figures.notifications.reset();
        figures.problem = "a page of vandral.1 or vandral.2 could not be read";
    } else if (!hasMain || !hasVandral) {
        figures.problem = whyNotAttached(rootPath.directory());
    }
    return figures;
}

bool hasFilesOf(std::string const& tableName, TableFigures const& figures)
{
    TableFigures now;
    examineFiles(rootDirectory() + "/" + tableName, now);
    return now.files == figures.files;
}

}  // namespace Quask::Stat
