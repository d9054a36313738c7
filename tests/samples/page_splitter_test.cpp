#include "job/page_splitter.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vok::sample {
namespace {

struct Pages {
    std::string bytes;
    int started = 0;
    int ended = 0;
    bool open = false;
};

Pages splitInChunksOf(std::size_t size, const std::string& document) {
    Pages pages;
    PageSplitter splitter;
    for (std::size_t at = 0; at < document.size(); at += size) {
        std::string_view chunk = std::string_view(document).substr(at, size);
        while (!chunk.empty()) {
            const PagePiece piece = splitter.next(chunk);
            pages.bytes += piece.bytes;
            pages.started += piece.startsPage ? 1 : 0;
            pages.ended += piece.endsPage ? 1 : 0;
        }
    }
    pages.open = splitter.inPage();
    return pages;
}

TEST(PageSplitterTest, ThePiecesAreTheDocumentInChunksOfAnySize) {
    const std::string document = "one\ftwo\fthree";
    for (std::size_t size = 1; size <= document.size(); ++size) {
        const Pages pages = splitInChunksOf(size, document);
        EXPECT_EQ(pages.bytes, document) << size;
        EXPECT_EQ(pages.started, 3) << size;
        EXPECT_EQ(pages.ended, 2) << size;
        EXPECT_TRUE(pages.open) << size;
    }
}

TEST(PageSplitterTest, AFormFeedAtTheEndBeginsNoFurtherPage) {
    const Pages pages = splitInChunksOf(4, "one\f");
    EXPECT_EQ(pages.started, 1);
    EXPECT_EQ(pages.ended, 1);
    EXPECT_FALSE(pages.open);
}

TEST(PageSplitterTest, AnEmptyPageIsAPage) {
    const Pages pages = splitInChunksOf(64, "\f\fx");
    EXPECT_EQ(pages.started, 3);
    EXPECT_EQ(pages.ended, 2);
}

TEST(PageSplitterTest, BytesThatAreZeroAreBytesLikeOthers) {
    const std::string document("a\0b\fc\0", 6);
    EXPECT_EQ(splitInChunksOf(2, document).bytes, document);
}

TEST(PageSplitterTest, WithoutADocumentThereIsNoPage) {
    EXPECT_FALSE(PageSplitter().inPage());
}

}  // namespace
}  // namespace vok::sample
