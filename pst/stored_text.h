#pragma once
// The text of a stored string property, as store and folder names are read.
#include <string>

#include "pst/block.h"

namespace PST {

// Narrow text (type 30) through the system's code page, without its terminator; any other type
// as UTF-16 units of (size - 2) / 2. Empty for no item or an empty value.
std::u16string storedText(const BlockItem* item);

}  // namespace PST
