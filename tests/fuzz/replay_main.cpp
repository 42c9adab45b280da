/* replay_main.cpp - runs a fuzz target over given files and folders: saved inputs replay as an ordinary test, with any
 * compiler. A fault shows as a crash or as a sanitizer's report. */
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

static void replay(const std::filesystem::path &path)
{
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(text.data()), text.size());
}

int main(int argc, char **argv)
{
    size_t num = 0;
    for (int k = 1; k < argc; ++k) {
        const std::filesystem::path path = argv[k];
        if (std::filesystem::is_directory(path)) {
            for (const auto &entry : std::filesystem::directory_iterator(path)) {
                if (!entry.is_regular_file()) continue;
                replay(entry.path());
                ++num;
            }
        } else if (std::filesystem::exists(path)) {
            replay(path);
            ++num;
        }
    }
    std::printf("%zu inputs\n", num);
    return num > 0 ? 0 : 1;
}
