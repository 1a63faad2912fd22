// Runs a fuzz target's entry over every file below the folders given (its seeds and the inputs
// kept from earlier findings), so the ordinary test run replays them without libFuzzer.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "fuzzing.h"

int main(int argc, char **argv)
{
    std::set<std::filesystem::path> inputs; // sorted, so a run replays them in the same order
    for (int i = 1; i < argc; ++i)
        for (const auto &entry : std::filesystem::recursive_directory_iterator(argv[i]))
            if (entry.is_regular_file())
                inputs.insert(entry.path());
    for (const auto &path : inputs) {
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        std::fprintf(stderr, "%s\n", path.c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return inputs.empty(); // no input at all means a wrong folder, not a pass
}
