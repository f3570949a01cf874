// The fuzzer's property, run in `make check` without clang: every file of
// the committed corpus (LibObject/object/fuzz/corpus, where inputs that
// once crashed are kept), then mutations of them from a fixed seed.

#include "LibObject/object/fuzz/tvserialfuzzcheck.h"

#include "TestSupport/tvobjecttest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr unsigned C_MutationSeed = 20261121;
constexpr int C_MutatedInputs = 3000;

using Corpus = std::vector<std::pair<std::string, std::string>>; // name, bytes

Corpus load_corpus()
{
    Corpus corpus;
    for (const auto& file : std::filesystem::directory_iterator(TV_SERIAL_CORPUS_DIR)) {
        std::ifstream in(file.path(), std::ios::binary);
        corpus.emplace_back(file.path().filename().string(),
                            std::string(std::istreambuf_iterator<char>(in), {}));
    }
    std::sort(corpus.begin(), corpus.end()); // directory order is not fixed
    return corpus;
}

// Pieces that make the reader take another path than the one it was on.
const std::string C_Tokens[] = {"{", "}", "@", "!", "\\", "\n", "\r", std::string(1, '\0'),
                                "+", "=", "/", "@kid\n", "@note\n{TVTestNote\n", "{TVTestItem\n",
                                "}\n", "!K!", "!TVTestBase+K!", "!OldBase+K!", "\\n", "-"};

class Mutator
{
public:
    explicit Mutator(unsigned seed) : m_random(seed) {}

    std::string mutate(const Corpus& corpus)
    {
        std::string text = pick(corpus);
        const int steps = 1 + below(4);
        for (int i = 0; i < steps; ++i) {
            switch (below(5)) {
            case 0: // replace one byte
                if (!text.empty())
                    text[below(text.size())] = static_cast<char>(below(256));
                break;
            case 1: { // insert a token
                const std::string& piece = C_Tokens[below(std::size(C_Tokens))];
                text.insert(below(text.size() + 1), piece);
                break;
            }
            case 2: // cut a range
                if (!text.empty()) {
                    const size_t from = below(text.size());
                    text.erase(from, 1 + below(std::min<size_t>(text.size() - from, 16)));
                }
                break;
            case 3: { // repeat a range
                if (text.empty())
                    break;
                const size_t from = below(text.size());
                const std::string piece = text.substr(from, 1 + below(32));
                text.insert(below(text.size() + 1), piece);
                break;
            }
            default: { // splice with another input
                const std::string other = pick(corpus);
                text = text.substr(0, below(text.size() + 1)) + other.substr(below(other.size() + 1));
                break;
            }
            }
        }
        return text;
    }

private:
    size_t below(size_t n) { return n == 0 ? 0 : std::uniform_int_distribution<size_t>(0, n - 1)(m_random); }
    const std::string& pick(const Corpus& corpus) { return corpus[below(corpus.size())].second; }

    std::mt19937 m_random;
};

TVSerialFuzzResult check(const std::string& bytes)
{
    return tv_serial_fuzz_check(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

using SerialFuzzTest = TVObjectTest;

TEST_F(SerialFuzzTest, EveryCorpusInputKeepsTheRoundTripProperty)
{
    const Corpus corpus = load_corpus();
    ASSERT_GE(corpus.size(), 20u);
    size_t readable = 0;
    for (const auto& [name, bytes] : corpus) {
        SCOPED_TRACE(name);
        const TVSerialFuzzResult result = check(bytes);
        EXPECT_EQ(result.fault, "");
        readable += result.read ? 1 : 0;
    }
    // Most seeds must get past the reader, or the property says little.
    EXPECT_GE(readable * 3, corpus.size() * 2);
}

TEST_F(SerialFuzzTest, MutatedCorpusKeepsTheRoundTripProperty)
{
    const Corpus corpus = load_corpus();
    ASSERT_FALSE(corpus.empty());
    Mutator mutator(C_MutationSeed);
    int readable = 0;
    for (int i = 0; i < C_MutatedInputs; ++i) {
        const std::string bytes = mutator.mutate(corpus);
        const TVSerialFuzzResult result = check(bytes);
        ASSERT_EQ(result.fault, "") << "seed " << C_MutationSeed << ", input " << i << ":\n" << bytes;
        readable += result.read ? 1 : 0;
    }
    EXPECT_GT(readable, C_MutatedInputs / 4);
}

} // namespace
