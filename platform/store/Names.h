// Names.h: rules for keys, names and texts that every kind of store applies alike. All texts are
// UTF-8.
#ifndef ORVO_PLATFORM_STORE_NAMES_H
#define ORVO_PLATFORM_STORE_NAMES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::store {

/// Whether a text may be the key of a new record: printable ASCII, not empty. Keys are compared
/// without regard to case, which only ASCII does alike in records and in every database.
bool isKey(std::string_view text);
/// A new key: 32 hexadecimal digits, random. Empty if the system gives no random bytes.
std::string newKey();
/// ASCII letters in lower case: the form in which keys are compared.
std::string foldedKey(std::string_view key);

/// Whether two texts are the same to the editors, which see them in Windows-1251 and without regard
/// to case.
bool sameText(std::string_view a, std::string_view b);
/// Whether the text comes through Windows-1251 and back unchanged. A name that does not could never
/// be named by an editor again.
bool isShowable(std::string_view text);
/// Length of the valid UTF-8 sequence at the start of a text that is not empty; 0 if there is none.
size_t sequenceLength(std::string_view text);
/// The text with every byte that is not part of valid UTF-8 replaced by '?', as it reads in
/// records.
std::string validUtf8(std::string text);
/// Length of the control character that the text begins with, of those of ASCII or of U+0080 to
/// U+009F, which terminals obey as well; 0 if it begins with none.
size_t controlLength(std::string_view text);
/// The text with another character in the place of each control character.
std::string withoutControls(std::string_view text, char instead);
/// The text in quotation marks, on one line and not too long: for messages.
std::string shown(std::string_view text);

/// The letters beyond ASCII that have two cases in Windows-1251, in the same order. Indexes of
/// released stores are made with them: never to be changed.
constexpr const char upperLetters[] = "АБВГҐЃДЂЕЁЄЖЗЅИІЇЙЈКЌЛЉМНЊОПРСТЋУЎФХЦЧЏШЩЪЫЬЭЮЯ";
constexpr const char lowerLetters[] = "абвгґѓдђеёєжзѕиіїйјкќлљмнњопрстћуўфхцчџшщъыьэюя";
/// The form in which the databases' indexes over names hold a name: texts without '?' are the same
/// to the editors exactly if this is equal. Nothing for a text that reads with a '?' in
/// Windows-1251, which any letter may stand behind that is not in it.
std::optional<std::string> foldedName(std::string_view name);

/// The name of a form with these files: of those with which, less a "_" at the end, all names begin
/// (of all, if there is none), one that ends in "_" before the shortest; of several equally good
/// ones the first in byte order. Empty without files.
std::string formName(const std::vector<std::string_view>& files);

} // namespace orvo::store

#endif
