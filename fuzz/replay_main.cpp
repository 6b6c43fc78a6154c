// FUZZER_replay PATH...: runs a fuzz target over files, and over all files of directories, without
// a fuzzer, so that every compiler's build can check them. A directory that does not exist is
// empty; no input at all is an error. The path of each input is on standard error before it
// runs.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<std::string> inputsOf(std::string const& path)
{
    if (fs::is_regular_file(path)) {
        return {path};
    }
    std::vector<std::string> inputs;
    if (fs::exists(path)) {
        for (fs::directory_entry const& entry : fs::directory_iterator(path)) {
            inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

void replay(std::string const& path)
{
    std::fprintf(stderr, "%s\n", path.c_str());
    std::ifstream file(path, std::ios::binary);
    std::vector<char> const bytes{std::istreambuf_iterator<char>(file),
                                  std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv)
{
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (std::string const& path : inputsOf(argv[i])) {
            replay(path);
            ++count;
        }
    }
    std::fprintf(stderr, "%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}
