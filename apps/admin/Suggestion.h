// Suggestion.h: what somebody who mistyped a word probably meant.
#ifndef ORVO_ADMIN_SUGGESTION_H
#define ORVO_ADMIN_SUGGESTION_H

#include <string>
#include <vector>

namespace orvo::admin {

/// "; может быть, «x»?" with the one of `present` that differs from the word in one letter, or in
/// two of a word of six and more; a swap of two neighbours is one. Without regard to case; empty if
/// there is none. Only what is there may be among `present`.
std::string suggestion(const std::string& word, const std::vector<std::string>& present);

} // namespace orvo::admin

#endif
