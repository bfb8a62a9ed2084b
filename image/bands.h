// A large picture's rows, made on several processors at once.
#pragma once

#include <cstdint>
#include <functional>

namespace marbelot {

// Calls `make` for bands of rows that together are those from 0 to before `rows`, each band on a
// thread of its own; returns when all are made. `pixels` is how many are to be read or written: few
// are quickest made by the calling thread alone.
void inBands(int rows, std::int64_t pixels, const std::function<void(int begin, int end)>& make);

}  // namespace marbelot
