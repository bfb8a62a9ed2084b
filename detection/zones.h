// Time zones as they stand behind a time: "Z", "+02:00", "CET", "GMT+1", "ET", "Eastern Time".
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot::detection {

// What a "-02:00" behind a blank is: the end of a range, or after seconds the zone of a stamp.
enum class Spaced { mayBeRange, stamp };

// Past a zone at `at`, which goes into `zone`: an offset as ISO 8601 writes it, or the name of a
// place where the offset depends on the date. `at` itself when there is none.
std::size_t readZone(std::string_view text, std::size_t at, std::string& zone, Spaced spaced);

// The offset that `zone` has at that local time; offsets are their own.
std::string zoneOffset(const std::string& zone, std::chrono::local_seconds when);

}  // namespace marbelot::detection
