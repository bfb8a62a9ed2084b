// Where no clipboard manager keeps what a program leaves behind at its end, a small process of our
// own does: marbelot-keeper. What it needs travels through memory that no disk sees.
#pragma once

#include <optional>
#include <string>

#include "platform/descriptor.h"
#include "platform/linux/clipboard_offer.h"

namespace marbelot {

// Starts one for the Wayland display of that name, or of the environment when it is empty. It takes
// the clipboard over from the owner that marks its offer with the type `mark`, and from nobody
// else. The descriptor can be read, or is at its end, when it has, or has found that it cannot;
// none when it could not be started.
Descriptor startClipboardKeeper(const ClipboardOffer& offer, const std::string& mark,
                                const std::string& display);

// In that process: what startClipboardKeeper() was given, from the memory file `from`.
std::optional<ClipboardOffer> keptOffer(int from);

}  // namespace marbelot
