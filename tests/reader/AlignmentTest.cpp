// What was taken out of a sequence and put in to make another one of it.

#include "scrivel/Alignment.h"

#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

using namespace ScrivelReader;

namespace
{

Keys KeysOf(const std::string& text)
{
    return Keys(text.begin(), text.end());
}

/// 2:c>X 5:>Y
std::string Hunks(const std::string& left, const std::string& right)
{
    std::string text;
    for (const Hunk& hunk : Align(KeysOf(left), KeysOf(right))) {
        text += (text.empty() ? "" : " ") + std::to_string(hunk.left) + ":" +
                left.substr(hunk.left, hunk.leftCount) + ">" + right.substr(hunk.right, hunk.rightCount);
    }
    return text;
}

Keys RandomKeys(std::minstd_rand& random, std::size_t count, unsigned int kinds)
{
    Keys keys(count);
    for (std::uint64_t& key : keys) {
        key = random() % kinds;
    }
    return keys;
}

std::size_t Longest(const Keys& left, const Keys& right)
{
    std::vector<std::size_t> row(right.size() + 1);
    for (const std::uint64_t key : left) {
        std::size_t diagonal = 0;
        for (std::size_t i = 0; i < right.size(); ++i) {
            const std::size_t above = row[i + 1];
            row[i + 1] = key == right[i] ? diagonal + 1 : std::max(row[i], above);
            diagonal = above;
        }
    }
    return row.back();
}

/// How many elements the hunks leave, after it is seen that they lead from the one to the other.
std::size_t EqualIn(const Keys& left, const Keys& right)
{
    std::size_t l = 0;
    std::size_t r = 0;
    std::size_t equal = 0;
    std::vector<Hunk> hunks = Align(left, right);
    hunks.push_back({std::uint32_t(left.size()), 0, std::uint32_t(right.size()), 0});
    for (const Hunk& hunk : hunks) {
        EXPECT_EQ(hunk.left - l, hunk.right - r);
        EXPECT_TRUE(std::equal(left.begin() + std::ptrdiff_t(l), left.begin() + std::ptrdiff_t(hunk.left),
                               right.begin() + std::ptrdiff_t(r)));
        equal += hunk.left - l;
        l = hunk.left + hunk.leftCount;
        r = hunk.right + hunk.rightCount;
    }
    EXPECT_EQ(l, left.size());
    EXPECT_EQ(r, right.size());
    return equal;
}

TEST(Alignment, IsEmptyOfEqualSequences)
{
    EXPECT_EQ(Hunks("", ""), "");
    EXPECT_EQ(Hunks("abc", "abc"), "");
}

TEST(Alignment, TellsWhatWasTakenOutAndPutIn)
{
    EXPECT_EQ(Hunks("abcdef", "abXdefg"), "2:c>X 6:>g");
    EXPECT_EQ(Hunks("", "ab"), "0:>ab");
    EXPECT_EQ(Hunks("ab", ""), "0:ab>");
    EXPECT_EQ(Hunks("abc", "xyz"), "0:abc>xyz");
}

TEST(Alignment, PutsAChangeAmongEqualElementsInOnePlace)
{
    EXPECT_EQ(Hunks("aaaa", "aXaa"), "1:a>X");
    EXPECT_EQ(Hunks("1aaaab2", "3aaXab4"), "0:1>3 3:a>X 6:2>4");
    EXPECT_EQ(Hunks("caaaacb", "caaaXcd"), "4:a>X 6:b>d");
}

TEST(Alignment, OfShortSequencesIsTheShortest)
{
    std::minstd_rand random(1);
    for (int i = 0; i < 2000; ++i) {
        const unsigned int kinds = 2 + unsigned(i) % 5;
        const Keys left = RandomKeys(random, random() % 40, kinds);
        const Keys right = RandomKeys(random, random() % 40, kinds);
        ASSERT_EQ(EqualIn(left, right), Longest(left, right)) << i;
    }
}

TEST(Alignment, OfLongSequencesExplainsThem)
{
    std::minstd_rand random(2);
    for (const unsigned int kinds : {2U, 50U, 5000U, 1000000U}) {
        const Keys left = RandomKeys(random, 20000, kinds);
        Keys right;
        for (const std::uint64_t key : left) {
            const unsigned int dice = unsigned(random() % 10);
            if (dice != 0) {
                right.push_back(dice == 1 ? random() % kinds : key);
            }
        }
        EXPECT_GE(EqualIn(left, right), left.size() * 7 / 10) << kinds;
        EqualIn(left, RandomKeys(random, 20000, kinds));
    }
}

TEST(Alignment, FindsItsWayBackAfterALongStretch)
{
    std::minstd_rand random(3);
    const Keys left = RandomKeys(random, 20000, 1U << 30);
    Keys right = left;
    const Keys added = RandomKeys(random, 5000, 1U << 30);
    right.insert(right.begin() + 7000, added.begin(), added.end());
    EXPECT_EQ(EqualIn(left, right), left.size());
}

}  // namespace
