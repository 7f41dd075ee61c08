// Runs a fuzz target for a while without a fuzzer: real messages where there are any, else random octets, with bits
// turned over, cut, lengthened and put together.
//
//   codec_mutation_<family> [RUNS [SEED]]    2000 runs; the seed is printed, and makes a run come out the same
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using octets = std::vector<std::uint8_t>;

std::vector<octets> real_messages()
{
    const char                 *set = std::getenv("SOLVANE_VECTORS");
    const std::filesystem::path folder = set != nullptr && *set != '\0' ? set : SOLVANE_VECTORS_DEFAULT;
    std::vector<octets>         out;
    std::error_code             none;
    for (const auto &file : std::filesystem::directory_iterator(folder, none)) {
        std::ifstream in(file.path());
        for (std::string line; file.path().extension() == ".tsv" && std::getline(in, line);) {
            std::istringstream columns(line);
            std::string        hex;
            for (int column = 0; column < 4; ++column) {
                std::getline(columns, hex, '\t');
            }
            octets message;
            for (std::size_t at = 0; at + 1 < hex.size() && std::isxdigit(static_cast<unsigned char>(hex[at])) != 0;
                 at += 2) {
                message.push_back(static_cast<std::uint8_t>(std::strtoul(hex.substr(at, 2).c_str(), nullptr, 16)));
            }
            out.push_back(std::move(message));
        }
    }
    return out;
}

class mutator {
public:
    mutator(std::vector<octets> seeds, unsigned seed) : seeds_(std::move(seeds)), random_(seed) {}

    octets next()
    {
        octets input = {octet(), octet()}; /* the row */
        octets message = any();
        for (std::size_t changes = below(4); changes > 0; --changes) {
            change(message);
        }
        input.insert(input.end(), message.begin(), message.end());
        return input;
    }

private:
    std::size_t  below(std::size_t n) { return n != 0 ? random_() % n : 0; }
    std::uint8_t octet() { return static_cast<std::uint8_t>(random_()); }

    octets any()
    {
        if (!seeds_.empty() && below(8) != 0) {
            return seeds_[below(seeds_.size())];
        }
        octets made(below(120));
        for (auto &each : made) {
            each = octet();
        }
        return made;
    }

    void change(octets &message)
    {
        const auto at = [&] { return message.begin() + static_cast<std::ptrdiff_t>(below(message.size())); };
        switch (message.empty() ? 3 : below(5)) {
        case 0: *at() ^= static_cast<std::uint8_t>(1U << below(8)); break;
        case 1: *at() = octet(); break;
        case 2: message.resize(below(message.size())); break;
        case 3: message.insert(message.end(), below(9), octet()); break;
        default: {
            const octets other = any();
            message.insert(at(), other.begin(), other.end());
        }
        }
    }

    std::vector<octets> seeds_;
    std::mt19937        random_;
};

} // namespace

int main(int argc, char **argv)
{
    const unsigned long runs = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 2000;
    const auto          seed = static_cast<unsigned>(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : std::random_device()());
    auto                seeds = real_messages();
    std::printf("%lu runs with seed %u over %zu messages\n", runs, seed, seeds.size());
    std::fflush(stdout);
    LLVMFuzzerInitialize(&argc, &argv);
    mutator inputs(std::move(seeds), seed);
    for (unsigned long run = 0; run < runs; ++run) {
        const octets input = inputs.next();
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
}
