/**
 * @file page_splitter.h
 * Finds the pages of a RAW or TEXT document: a page ends with a form feed, or with the document.
 */
#pragma once

#include <string_view>

namespace vok::sample {

/// A piece of one page.
struct PagePiece {
    std::string_view bytes;
    bool startsPage;
    bool endsPage;  ///< The piece ends with the page's form feed.
};

/// Takes a document chunk by chunk, in any sizes, and gives it back in pieces that never reach over
/// the end of a page. The pieces of all chunks together are the document, byte for byte.
class PageSplitter {
  public:
    /// Takes the next piece off the front of `chunk`, which must not be empty.
    PagePiece next(std::string_view& chunk);

    /// True while a page has begun and has not ended: at the document's end it ends the page.
    [[nodiscard]] bool inPage() const { return inPage_; }

  private:
    bool inPage_ = false;
};

}  // namespace vok::sample
