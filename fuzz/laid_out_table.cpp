#include "laid_out_table.h"

#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "mem/schedule_point.h"
#include "work_directory.h"

namespace QuaskFuzzing {
namespace {

LaidOutTable* theTable = nullptr;

void require(bool succeeded)
{
    if (!succeeded) {
        throw std::runtime_error("cannot lay out the table's files");
    }
}

void writeAt(int descriptor, std::string_view bytes, std::size_t position)
{
    ssize_t const written =
        pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(position));
    require(written == static_cast<ssize_t>(bytes.size()));
}

}  // namespace

LaidOutTable::LaidOutTable()
{
    std::string const directory = workDirectory() + "/" + name;
    std::filesystem::create_directory(directory);
    for (std::size_t i = 0; i < fileCount; ++i) {
        std::string const path =
            directory + "/" + QuaskTesting::fileName(QuaskTesting::allTableFiles[i]);
        descriptors_[i] = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        require(descriptors_[i] >= 0);
    }
    theTable = this;
}

LaidOutTable::~LaidOutTable()
{
    theTable = nullptr;
    for (int const descriptor : descriptors_) {
        close(descriptor);
    }
}

void LaidOutTable::begin(EditedTable const& table)
{
    for (std::size_t i = 0; i < fileCount; ++i) {
        std::string const& contents = table.files[i];
        require(ftruncate(descriptors_[i], static_cast<off_t>(contents.size())) == 0);
        writeAt(descriptors_[i], contents, 0);
    }
    nextEdit_ = table.liveEdits.data();
    lastEdit_ = nextEdit_ + table.liveEdits.size();
    waited_ = 0;
}

void LaidOutTable::tick()
{
    for (++waited_; nextEdit_ != lastEdit_ && waited_ > nextEdit_->wait; waited_ = 0) {
        apply(*nextEdit_++);
    }
}

void LaidOutTable::apply(EditedTable::Edit const& edit) const
{
    int const descriptor = descriptors_[edit.file];
    if (!edit.setsLength) {
        writeAt(descriptor, edit.bytes, edit.position);
        return;
    }
    auto const length = static_cast<off_t>(edit.position);
    struct stat status
    {};
    require(fstat(descriptor, &status) == 0);
    require(length <= status.st_size || ftruncate(descriptor, length) == 0);
}

}  // namespace QuaskFuzzing

void Mem::schedulePoint(void const* /*address*/, std::size_t /*size*/, std::memory_order /*order*/)
{
    if (QuaskFuzzing::theTable != nullptr) {
        QuaskFuzzing::theTable->beforeLoad();
    }
}

void Mem::scheduleFence() {}
void Mem::scheduleFileSize() {}
void Mem::scheduleNameUse() {}
