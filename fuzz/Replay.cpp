// Gives a fuzz target the inputs of its corpus, one after the other: what libFuzzer does with a corpus
// before it makes inputs of its own, in every build and with every compiler.
//
//     replay_text corpus/text

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace
{

std::vector<std::filesystem::path> Files(const std::filesystem::path& place)
{
    if (!std::filesystem::is_directory(place)) {
        return {place};
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv)
{
    unsigned int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& file : Files(argv[i])) {
            std::ifstream stream(file, std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
            if (!stream.is_open() || stream.bad()) {
                std::cerr << "can't read " << file << '\n';
                return 1;
            }
            std::cerr << file.filename().string() << std::endl;  // the last one named is the culprit
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    std::cout << inputs << " inputs\n";
    return inputs > 0 ? 0 : 1;
}
