// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/ProcessFigures.h"
#include "bench/Report.h"
#include "bench/compare/MemoryText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace spotwell::bench
{

namespace
{

TEST(QuantileTest, TakesTheValueThatIsThere)
{
    EXPECT_EQ(median({}), 0);
    EXPECT_EQ(median({7}), 7);
    EXPECT_EQ(median({3, 1, 2}), 2);
    EXPECT_EQ(quantile({5, 1, 4, 2, 3}, 0), 1);
    EXPECT_EQ(quantile({5, 1, 4, 2, 3}, 1), 5);
    std::vector<double> hundredOne(101);
    for (std::size_t i = 0; i < hundredOne.size(); ++i)
        hundredOne[i] = static_cast<double>(100 - i);
    EXPECT_EQ(quantile(hundredOne, 0.99), 99);
    EXPECT_EQ(inTable({3, 1, 2}, 1), QStringLiteral("2.0 (1.0 to 3.0)"));
    EXPECT_EQ(inTable({3}, 0), QStringLiteral("3"));
}

TEST(MemoryFiguresTest, AreThoseOfTheProcess)
{
    const MemoryFigures figures = memoryOf(::getpid());
    EXPECT_GT(figures.unshared, 0);
    EXPECT_GE(figures.proportional, figures.unshared);
    EXPECT_GE(figures.resident, figures.proportional);
    EXPECT_GE(figures.peak, figures.resident / 2);
    EXPECT_EQ(memoryOf(0).resident, 0);
}

TEST(FamilyTest, HasTheProcessAndItsChildren)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    const std::vector<qint64> family = familyOf(::getpid());
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ASSERT_FALSE(family.empty());
    EXPECT_EQ(family.front(), ::getpid());
    EXPECT_EQ(std::count(family.begin(), family.end(), child), 1);
    const std::vector<qint64> without = familyOf(::getpid());
    EXPECT_EQ(std::count(without.begin(), without.end(), child), 0);
}

/// A child that has `Character`s of a text in its memory which its parent has not.
template <typename Character>
class Holder
{
public:
    Holder()
    {
        std::array<int, 2> ready{};
        EXPECT_EQ(::pipe(ready.data()), 0);
        child_ = ::fork();
        if (child_ == 0) {
            std::vector<Character> text;
            for (int i = 0; i < length; ++i)
                text.push_back(static_cast<Character>(letter(i)));
            (void)::write(ready[1], text.data(), 1);
            ::pause();
            ::_exit(static_cast<int>(text.size()));
        }
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 1);
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~Holder()
    {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    [[nodiscard]] bool knowsText() const { return knows(0); }
    [[nodiscard]] bool knowsAnother() const { return knows(1); }

private:
    static constexpr int length = 20;

    /// Of a text that is no alphabet: these are in every memory.
    static char letter(int index) { return static_cast<char>('a' + index * 7 % 25); }

    /// The text, or one like it that begins later.
    [[nodiscard]] bool knows(int first) const
    {
        std::string text;
        for (int i = 0; i < length; ++i)
            text += letter(first + i);
        return hasInMemory(child_, text);
    }

    pid_t child_ = -1;
};

TEST(MemoryTextTest, FindsCharactersOfAnySize)
{
    const Holder<char> bytes;
    const Holder<char16_t> pairs;
    const Holder<char32_t> fours;
    EXPECT_TRUE(bytes.knowsText());
    EXPECT_TRUE(pairs.knowsText());
    EXPECT_TRUE(fours.knowsText());
    EXPECT_FALSE(bytes.knowsAnother());
    EXPECT_FALSE(pairs.knowsAnother());
    EXPECT_FALSE(fours.knowsAnother());
    EXPECT_FALSE(hasInMemory(0, "abc"));
}

} // namespace

} // namespace spotwell::bench
