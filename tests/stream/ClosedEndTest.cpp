// Which ends of a text can be closed up, and what they are then.

#include "stream/ClosedEnd.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace
{

using Scrivel2::Block;
using Scrivel2::ClosedEnd;
using Scrivel2::FlushText;
using Scrivel2::StandIn;

/// The text with its end closed up, when it begins at a place of the file; the text when its end can't
/// be.
std::string Closed(const std::string& given, off_t start = 0, off_t from = 0)
{
    std::string text = given;
    const FlushText flushed{text.data(), start, start + static_cast<off_t>(text.size())};
    if (const auto end = ClosedEnd::Of(flushed, from)) {
        EXPECT_EQ(end->Start() + static_cast<off_t>(end->Bytes().size()), flushed.end);
        std::string closed;
        {
            const StandIn inItsPlace(flushed.At(end->Start()), end->Bytes());
            closed = text;
        }
        EXPECT_EQ(text, given);
        return closed;
    }
    return text;
}

TEST(ClosedEnd, HasAnInstructionInThePlaceOfTheBlanks)
{
    EXPECT_EQ(Closed("<b>x y</b>\n    </call>\n</log>\n"), "<b>x y</b></call></log><?x  ?>");
    EXPECT_EQ(Closed("<b>x y</b>\n   </call>\n</log>\n"), "<b>x y</b></call></log><?x ?>");
    EXPECT_EQ(Closed("</a></b> \t\r\n  </c>"), "</a></b></c><?x ?>");
}

TEST(ClosedEnd, TakesNoMoreTagsThanItNeeds)
{
    EXPECT_EQ(Closed("</b>\n    </call>\n</log>\n      "), "</b>\n    </call>\n</log><?x  ?>");
    EXPECT_EQ(Closed("</a>\n        </b>\n    </call>\n</log>\n"),
              "</a>\n        </b></call></log><?x  ?>");
}

TEST(ClosedEnd, NeedsRoomForAnInstruction)
{
    for (const char* text : {"", "\n", "        ", "x", "</log>\n", "<b>x</b>\n  </call>\n</log>\n"}) {
        EXPECT_EQ(Closed(text), text);
    }
}

TEST(ClosedEnd, LeavesBlanksThatMayMeanSomething)
{
    for (const char* text :
         {"<b>x         </b></log>\n", "<b>         </b></log>\n", "<c/>         </b></log>\n",
          "-->         </b></log>\n", "x</b> y         </c></log>\n", "</b x         >\n</log>\n",
          "</b         ></c></log>\n", "</b ></c         ></log>\n", "<!-- </b         -->\n",
          "<!-- </b -->         </log>\n", "</b>x>         </log>\n", "</log>\n<b>         "}) {
        EXPECT_EQ(Closed(text), text);
    }
}

TEST(ClosedEnd, LiesOnTheLastPageWholly)
{
    const std::string text = "<b>x y</b>\n    </call>\n</log>\n";
    const std::string end = "\n    </call>\n</log>\n";
    constexpr off_t page = 3 * Block::pageSize;
    const off_t first = page - static_cast<off_t>(text.size() - end.size());
    EXPECT_NE(Closed(text, page - static_cast<off_t>(text.size())), text);
    for (off_t start = page - static_cast<off_t>(text.size()) + 1; start < page; ++start) {
        EXPECT_EQ(Closed(text, start) == text, start < first) << start;
    }
}

TEST(ClosedEnd, BeginsNowhereBeforeThePlaceThatItIsGiven)
{
    const std::string text = "<b>x y</b>\n    </call>\n</log>\n";
    const off_t start = Block::pageSize;
    EXPECT_NE(Closed(text, start, start + static_cast<off_t>(text.find('\n'))), text);
    EXPECT_EQ(Closed(text, start, start + static_cast<off_t>(text.find('\n')) + 1), text);
    EXPECT_EQ(Closed(text, start, start + 1000), text);
}

TEST(ClosedEnd, IsOfLimitedLength)
{
    const std::string longName(StandIn::longest - 20, 'n');
    EXPECT_NE(Closed("</b>\n    </" + longName + ">\n\n"), "</b>\n    </" + longName + ">\n\n");
    EXPECT_EQ(Closed("</b>\n    </" + longName + "123456789>\n\n"),
              "</b>\n    </" + longName + "123456789>\n\n");
}

}  // namespace
