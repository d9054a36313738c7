#include "page_splitter.h"

#include <string_view>

namespace vok::sample {

PagePiece PageSplitter::next(std::string_view& chunk) {
    const std::size_t feed = chunk.find('\f');
    const bool endsPage = feed != std::string_view::npos;
    const PagePiece piece{chunk.substr(0, endsPage ? feed + 1 : chunk.size()), !inPage_, endsPage};
    chunk.remove_prefix(piece.bytes.size());
    inPage_ = !endsPage;
    return piece;
}

}  // namespace vok::sample
