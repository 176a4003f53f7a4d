// Elements that occur once on both sides are held together first; what lies between them is compared by
// Myers' algorithm, in windows. Tested by tests/reader/AlignmentTest.cpp.

#include "scrivel/Alignment.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace ScrivelReader
{

namespace
{

using Place = std::uint32_t;

struct Range
{
    Place begin;
    Place end;

    Place Count() const { return end - begin; }
};

class Aligner
{
public:
    Aligner(const Keys& itsLeft, const Keys& itsRight) : left(itsLeft), right(itsRight) {}

    std::vector<Hunk> Align()
    {
        Compare({0, Place(left.size())}, {0, Place(right.size())}, 0);
        JoinNeighbours();
        return std::move(hunks);
    }

private:
    // Shorter stretches are as fast without.
    static constexpr Place leastForAnchors = 64;
    static constexpr int deepest = 8;
    // Differences in one window. What a window costs grows with its square.
    static constexpr int mostDifferences = 512;
    static constexpr std::int64_t none = -1;

    void Compare(Range a, Range b, int depth)
    {
        while (a.begin < a.end && b.begin < b.end && left[a.begin] == right[b.begin]) {
            ++a.begin;
            ++b.begin;
        }
        while (a.begin < a.end && b.begin < b.end && left[a.end - 1] == right[b.end - 1]) {
            --a.end;
            --b.end;
        }
        if (a.Count() == 0 || b.Count() == 0) {
            Add(a, b);
            return;
        }
        const bool isLong = std::min(a.Count(), b.Count()) >= leastForAnchors;
        if (isLong && depth < deepest) {
            const auto anchors = Anchors(a, b);
            for (const auto& [inLeft, inRight] : anchors) {
                Compare({a.begin, inLeft}, {b.begin, inRight}, depth + 1);
                a.begin = inLeft + 1;
                b.begin = inRight + 1;
            }
            if (!anchors.empty()) {
                Compare(a, b, depth + 1);
                return;
            }
        }
        while (a.Count() != 0 && b.Count() != 0)
            TakeWindow(a, b);
        Add(a, b);
    }

    // ---- What occurs once on both sides ---------------------------------------------------------------

    struct Occurrence
    {
        std::uint64_t key;
        Place place;

        bool operator<(const Occurrence& other) const
        {
            return key < other.key || (key == other.key && place < other.place);
        }
    };

    static std::vector<Occurrence> Once(const Keys& keys, Range range)
    {
        std::vector<Occurrence> all;
        all.reserve(range.Count());
        for (Place i = range.begin; i < range.end; ++i)
            all.push_back({keys[i], i});
        std::sort(all.begin(), all.end());
        std::size_t kept = 0;
        for (std::size_t i = 0; i < all.size();) {
            std::size_t next = i + 1;
            while (next < all.size() && all[next].key == all[i].key)
                ++next;
            if (next == i + 1)
                all[kept++] = all[i];
            i = next;
        }
        all.resize(kept);
        return all;
    }

    /// The most of them that stand in one order on both sides.
    std::vector<std::pair<Place, Place>> Anchors(Range a, Range b) const
    {
        std::vector<std::pair<Place, Place>> both;
        {
            const std::vector<Occurrence> inLeft = Once(left, a);
            const std::vector<Occurrence> inRight = Once(right, b);
            auto r = inRight.begin();
            for (const Occurrence& l : inLeft) {
                while (r != inRight.end() && r->key < l.key)
                    ++r;
                if (r != inRight.end() && r->key == l.key)
                    both.emplace_back(l.place, r->place);
            }
        }
        std::sort(both.begin(), both.end());

        // Patience: the last card of each pile, and for each card the one under which it was laid.
        std::vector<Place> piles;
        std::vector<Place> before(both.size());
        for (Place i = 0; i < both.size(); ++i) {
            const auto pile =
                std::lower_bound(piles.begin(), piles.end(), both[i].second,
                                 [&](Place card, Place place) { return both[card].second < place; });
            before[i] = pile == piles.begin() ? i : *std::prev(pile);
            if (pile == piles.end())
                piles.push_back(i);
            else
                *pile = i;
        }
        std::vector<std::pair<Place, Place>> rising(piles.size());
        Place card = piles.empty() ? 0 : piles.back();
        for (auto place = rising.rbegin(); place != rising.rend(); ++place) {
            *place = both[card];
            card = before[card];
        }
        return rising;
    }

    // ---- Myers ----------------------------------------------------------------------------------------

    /// How far one gets with so many differences on each diagonal k = x - y: x, or none. One row for each
    /// number of differences d, with the diagonals -d, -d + 2, ... d.
    std::int64_t& Furthest(int d, int k)
    {
        return reach[std::size_t(d) * std::size_t(d + 1) / 2 + std::size_t((k + d) / 2)];
    }

    /// The step onto a diagonal that gets further: right from k - 1 or down from k + 1.
    std::int64_t Step(int d, int k, std::int64_t width, std::int64_t height, bool& isDown)
    {
        const std::int64_t beside = k == -d ? none : Furthest(d - 1, k - 1);
        const std::int64_t above = k == d ? none : Furthest(d - 1, k + 1);
        const std::int64_t across = beside == none || beside == width ? none : beside + 1;
        const std::int64_t down = above == none || above - k > height ? none : above;
        isDown = down >= across;
        return std::max(across, down);
    }

    /// Compares the beginnings of the ranges up to where the differences are too many, and takes them
    /// off.
    void TakeWindow(Range& a, Range& b)
    {
        const std::int64_t width = a.Count();
        const std::int64_t height = b.Count();
        int bestDiagonal = 0;
        int d = 0;
        for (bool isDone = false; !isDone; ++d) {
            // Row by row: most of what is compared is short, and differs in a value or two.
            const std::size_t rows = std::size_t(d + 1) * std::size_t(d + 2) / 2;
            if (reach.size() < rows)
                reach.resize(rows);
            std::int64_t best = none;
            for (int k = -d; k <= d; k += 2) {
                bool ignored = false;
                std::int64_t x = d == 0 ? 0 : Step(d, k, width, height, ignored);
                if (x != none) {
                    while (x < width && x - k < height &&
                           left[a.begin + Place(x)] == right[b.begin + Place(x - k)])
                        ++x;
                    if (2 * x - k > best) {
                        best = 2 * x - k;
                        bestDiagonal = k;
                    }
                }
                Furthest(d, k) = x;
            }
            isDone = best == width + height || d == mostDifferences;
        }
        const std::int64_t x = Furthest(d - 1, bestDiagonal);
        AddPath(a, b, d - 1, bestDiagonal, width, height);
        a.begin += Place(x);
        b.begin += Place(x - bestDiagonal);
    }

    void AddPath(Range a, Range b, int d, int k, std::int64_t width, std::int64_t height)
    {
        std::vector<Hunk> steps;
        for (; d > 0; --d) {
            bool isDown = false;
            const std::int64_t x = Step(d, k, width, height, isDown);
            // The step led to x: it took one element, from the right when it went down.
            const Place l = a.begin + Place(x - (isDown ? 0 : 1));
            const Place r = b.begin + Place(x - k - (isDown ? 1 : 0));
            steps.push_back({l, isDown ? 0U : 1U, r, isDown ? 1U : 0U});
            k += isDown ? 1 : -1;
        }
        for (auto step = steps.rbegin(); step != steps.rend(); ++step)
            Add({step->left, step->left + step->leftCount},
                {step->right, step->right + step->rightCount});
    }

    // ---- Hunks ----------------------------------------------------------------------------------------

    void Add(Range a, Range b)
    {
        if (a.Count() == 0 && b.Count() == 0)
            return;
        if (!hunks.empty()) {
            Hunk& last = hunks.back();
            if (last.left + last.leftCount == a.begin && last.right + last.rightCount == b.begin) {
                last.leftCount += a.Count();
                last.rightCount += b.Count();
                return;
            }
        }
        hunks.push_back({a.begin, a.Count(), b.begin, b.Count()});
    }

    /// Where what lies between two hunks may as well stand before or after them, an element that was
    /// taken out and one that was put in come together:
    ///
    ///     left  a a a        one out at the first a, one in after the last   ->  a: one out, X in
    ///     right a a X
    void JoinNeighbours()
    {
        std::vector<Hunk> joined;
        for (const Hunk& hunk : std::exchange(hunks, {})) {
            if (joined.empty() || !Join(joined.back(), hunk))
                joined.push_back(hunk);
        }
        hunks = std::move(joined);
    }

    bool Join(Hunk& first, const Hunk& second) const
    {
        const Place gap = second.left - first.left - first.leftCount;
        const bool outThenIn = first.rightCount == 0 && second.leftCount == 0;
        const bool inThenOut = first.leftCount == 0 && second.rightCount == 0;
        if (!outThenIn && !inThenOut)
            return false;
        const Hunk both = {first.left, first.leftCount + second.leftCount, first.right,
                           first.rightCount + second.rightCount};
        // What was taken out moves among its equals, or what was put in does.
        if (IsRow(first, gap, 0)) {
            first = {both.left + gap, both.leftCount, both.right + gap, both.rightCount};
            return true;
        }
        if (IsRow(second, gap, gap)) {
            first = both;
            return true;
        }
        return false;
    }

    /// Whether a hunk of one side may stand so many places further, after it was moved back by as many.
    bool IsRow(const Hunk& hunk, Place places, Place back) const
    {
        const bool isLeft = hunk.rightCount == 0;
        const Keys& keys = isLeft ? left : right;
        const Place begin = (isLeft ? hunk.left : hunk.right) - back;
        const Place count = isLeft ? hunk.leftCount : hunk.rightCount;
        for (Place i = 0; i < places; ++i)
            if (keys[begin + i] != keys[begin + count + i])
                return false;
        return true;
    }

    const Keys& left;
    const Keys& right;
    std::vector<Hunk> hunks;
    std::vector<std::int64_t> reach;
};

}  // namespace

std::vector<Hunk> Align(const Keys& left, const Keys& right)
{
    return Aligner(left, right).Align();
}

}  // namespace ScrivelReader
