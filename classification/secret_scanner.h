// Finds API keys and tokens in a text. One pass, linear whatever the text holds: a fast filter
// names the places where a secret may begin (secret_filter.h), exact checks decide. `secretRanges`,
// which returns all of them, is declared with the other questions about a copied text in
// classifier.h.
#pragma once

#include <string_view>

namespace marbelot {

// Whether `secretRanges` would return anything; stops at the first secret.
bool containsSecret(std::string_view text);

}  // namespace marbelot
