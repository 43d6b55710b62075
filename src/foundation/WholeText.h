#ifndef AUTOOLS_FOUNDATION_WHOLETEXT_H
#define AUTOOLS_FOUNDATION_WHOLETEXT_H

#include "foundation/String.h"

#include <initializer_list>

namespace aut
{
/// The pieces one behind the other; a null piece counts as "". Without the memory for all of it, nothing: the operators
/// of String would leave a piece out, and a path that lost one names something else, which must never be written to,
/// moved onto or deleted. Whether a piece is whole itself is for the caller to know.
String wholeText(std::initializer_list<const char*> pieces);
} // namespace aut

#endif
