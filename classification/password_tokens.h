// The password tests' inner parts, shared by the classifier and the masks.
#pragma once

#include <string_view>
#include <vector>

#include "platform/text.h"

namespace marbelot {

// True when passwordTokens(text) would find something; stops at the first.
bool hasPasswordToken(std::string_view text);

// True when the lower-cased text contains one of the words that passwords are announced with.
bool mentionsSecret(std::string_view text);

// ^[vV]?\d+([.\-_]\d+){1,}([.\-_][A-Za-z][A-Za-z0-9]*)?$ where the end may be before a line end.
bool isVersionNumber(std::string_view token);

}  // namespace marbelot
