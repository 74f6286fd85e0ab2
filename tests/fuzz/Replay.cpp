// Runs a fuzzer's function over its seeds, one test for each.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

namespace tw::test {
namespace {

std::vector<std::filesystem::path> seeds()
{
    std::vector<std::filesystem::path> paths;
    for (auto const &entry : std::filesystem::directory_iterator(TARNWICK_CORPUS))
        paths.push_back(entry.path());
    std::ranges::sort(paths);
    return paths;
}

std::string testName(::testing::TestParamInfo<std::filesystem::path> const &seed)
{
    auto name = seed.param.filename().string();
    std::ranges::replace(name, '-', '_');
    return name;
}

class FuzzReplayTest : public ::testing::TestWithParam<std::filesystem::path> {};

TEST_P(FuzzReplayTest, aSeedHoldsWhatTheFuzzerChecks)
{
    std::ifstream stream(GetParam(), std::ios::binary);
    std::string const bytes{std::istreambuf_iterator<char>(stream), {}};
    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const *>(bytes.data()), bytes.size()), 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, FuzzReplayTest, ::testing::ValuesIn(seeds()), testName);

} // namespace
} // namespace tw::test
