// Time zones as they stand behind a time: "Z", "+02:00", "CET", "GMT+1", "ET", "Eastern Time".
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot::detection {

// What a "-10:00" behind a time is: the end of a range, or in a stamp its zone.
enum class Offset { mayBeRange, stamp };

// Past a zone at `at`, which goes into `zone`: an offset as ISO 8601 writes it, or the name of a
// place where the offset depends on the date. `at` itself when there is none.
std::size_t readZone(std::string_view text, std::size_t at, std::string& zone, Offset offset);

// The offset that `zone` has at that local time; offsets are their own.
std::string zoneOffset(const std::string& zone, std::chrono::local_seconds when);

}  // namespace marbelot::detection
