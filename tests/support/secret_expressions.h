// What the secret scanner looks for, as regular expressions for the libraries it is compared with.
// Of two matches that overlap, the one of the earlier expression stays.
#pragma once

namespace marbelot {

inline constexpr const char* secretExpressions[] = {
    R"(\beyJ[A-Za-z0-9_-]{8,}\.[A-Za-z0-9_-]{8,}\.[A-Za-z0-9_-]{8,})",
    R"(\b(?:sk|pk|rk)-[A-Za-z0-9_-]{16,})",
    R"(\b(?:sk|pk|rk)_(?:live|test)_[A-Za-z0-9]{16,})",
    R"(\b(?:ghp|gho|ghu|ghs|ghr)_[A-Za-z0-9]{20,})",
    R"(\bgithub_pat_[A-Za-z0-9_]{20,})",
    R"(\b(?:AKIA|ASIA)[A-Z0-9]{16}\b)",
    R"(\bAIza[A-Za-z0-9_-]{35})",
    R"(\bya29\.[A-Za-z0-9_-]{20,})",
    R"(\bxox[baprs]-[A-Za-z0-9-]{10,})",
    R"(\b[0-9a-fA-F]{40,}\b)",
};

}  // namespace marbelot
