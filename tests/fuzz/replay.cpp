// Gives a fuzz target the inputs that are named on the command line, files and folders, one after the other.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

bool replay(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    printf("%s\n", path.c_str());
    fflush(stdout); // so that the last line names the one that crashed
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(input.data()), input.size());
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::filesystem::path> inputs;
    for (int index = 1; index < argc; ++index) {
        if (!std::filesystem::is_directory(argv[index])) {
            inputs.emplace_back(argv[index]);
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(argv[index]))
            inputs.push_back(entry.path());
    }
    if (inputs.empty()) {
        fprintf(stderr, "there is no input\n");
        return EXIT_FAILURE;
    }
    for (const auto &input : inputs) {
        if (!replay(input))
            return EXIT_FAILURE;
    }
    printf("%zu inputs\n", inputs.size());
    return EXIT_SUCCESS;
}
