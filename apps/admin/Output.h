// Output.h: UTF-8 lines to the standard streams, whatever the locale says.
#ifndef ORVO_ADMIN_OUTPUT_H
#define ORVO_ADMIN_OUTPUT_H

#include <string>
#include <string_view>

namespace orvo::admin {

/// Writes the text and a line feed to standard output. A stream that takes no more (a closed pipe,
/// a full disk) is found by finishOutput.
void out(std::string_view line);
/// Writes "orvo-admin: <text>" as one line to standard error; control characters become blanks.
void complain(std::string_view text);
/// Whether all output has been taken.
bool finishOutput();
/// Whether output is still taken: false once a stream took no more.
bool outputTaken();
/// The text with control characters replaced by blanks: one cell of a line for people and scripts.
std::string cell(std::string_view text);
/// What follows the words for a record to say where it stands: "  (КС-3 / Агрегаты)"; nothing at
/// the top.
std::string placeInBrackets(std::string_view place);

} // namespace orvo::admin

#endif
