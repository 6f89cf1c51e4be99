// What a document may not exceed. The reader refuses more, so that a damaged or hostile file costs
// less than a second and 150 MB; the writer refuses to write what could not be read back.
#pragma once

#include <cstddef>

namespace XMLUtils {

// Elements inside each other; the document element counts.
inline constexpr size_t maxDepth = 256;
// Bytes of a document.
inline constexpr size_t maxDocumentSize = size_t{16} << 20;
inline constexpr size_t maxElements = 250'000;
// Attributes, together with the places in text and comments that look like one: an equals sign,
// any blanks, a quotation mark. They are counted before the document is parsed.
inline constexpr size_t maxAttributes = 250'000;

} // namespace XMLUtils
