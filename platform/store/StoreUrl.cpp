#include "platform/store/StoreUrl.h"

#include "frame/StdText.h"
#include "platform/store/Kinds.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvo::store {

namespace {

bool isSchemeCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '-' || c == '.';
}

/// "name" of "name://..."; empty if the text does not begin so. Before a bare ":" there may stand
/// the name of a user.
std::string schemeOf(const std::string& text) {
    const size_t end = text.find("://");
    const bool scheme =
        end != std::string::npos && end > 0 && end <= 20 &&
        std::all_of(text.begin(), text.begin() + static_cast<ptrdiff_t>(end), isSchemeCharacter);
    return scheme ? text.substr(0, end) : std::string();
}

Status notUnderstood(const std::string& text) {
    std::string schemes;
    for (const DatabaseKind& kind : kinds())
        schemes += (schemes.empty() ? "" : ", ") + std::string(kind.schemes.front());
    const std::string scheme = schemeOf(text);
    return {BadArguments, StdText::tr("Непонятный адрес хранилища") +
                              (scheme.empty() ? std::string() : StdText::tr(" вида ") + scheme) +
                              StdText::tr("; он начинается с ") + schemes +
                              StdText::tr(" или это путь к файлу")};
}

} // namespace

bool isPathText(const std::string& text) {
    if (text.empty() || text.starts_with("//") || text.find('\0') != std::string::npos)
        return false;
    return text.front() == '/' || text.starts_with("./") || text.starts_with("../") ||
           text.find_first_of(":@=") == std::string::npos;
}

Status StoreUrl::parse(const std::string& text) {
    const DatabaseKind* kind = findKind(text);
    const bool isPath = kind == nullptr && isPathText(text);
    if (isPath)
        kind = &fileKind();
    if (kind == nullptr)
        return notUnderstood(text);
    Location location;
    const Status status = kind->parse(isPath ? kind->schemes.front() + text : text, &location);
    if (!status.ok())
        return status;
    m_text = isPath ? location.displayName : text;
    m_displayName = location.displayName;
    m_file = location.file;
    m_isPath = isPath;
    return {};
}

namespace {

constexpr const char* mask = "***";

bool isBlank(char c) {
    return static_cast<unsigned char>(c) <= ' ';
}

/// The end of what one message quotes or says in one word, from `begin` on.
size_t wordEnd(const std::string& text, size_t begin) {
    for (const auto& [open, close] : {std::pair{StdText::tr("«"), StdText::tr("»")},
                                      std::pair{std::string("\""), std::string("\"")}})
        if (text.compare(begin, open.size(), open) == 0)
            return std::min(text.find(close, begin + 1), text.size());
    while (begin < text.size() && !isBlank(text[begin]))
        ++begin;
    return begin;
}

/// "user:secret@host", behind "//" or not: what is between its first ":" and its last "@", for a
/// password may hold both.
void hideInAddress(std::string* word) {
    const size_t slashes = word->find("//");
    const size_t colon = word->find(':', slashes == std::string::npos ? 0 : slashes);
    const size_t sign = word->rfind('@');
    if (sign != std::string::npos && colon < sign) {
        word->replace(colon + 1, sign - colon - 1, mask);
    } else if (slashes != std::string::npos) {
        // "//user:secret" without a host: a port is a number.
        const size_t end = std::min(word->find_first_of("/?,", slashes + 2), word->size());
        const bool six = word->compare(slashes + 2, 1, "[") == 0;
        if (colon < end && !six && word->find_first_not_of("0123456789", colon + 1) < end)
            word->replace(colon + 1, end - colon - 1, mask);
    }
}

/// "password=secret" or "password='secret'".
void hideOption(std::string* text) {
    const std::string_view name = "password=";
    const auto same = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
    for (size_t at = 0;;) {
        const auto found = std::search(text->begin() + static_cast<ptrdiff_t>(at), text->end(),
                                       name.begin(), name.end(), same);
        if (found == text->end())
            return;
        at = static_cast<size_t>(found - text->begin()) + name.size();
        const bool quoted = at < text->size() && (*text)[at] == '\'';
        size_t end = quoted ? at + 1 : at;
        while (end < text->size() &&
               (quoted ? (*text)[end] != '\'' : !isBlank((*text)[end]) && (*text)[end] != '&'))
            ++end;
        text->replace(at, end - at + (quoted && end < text->size() ? 1 : 0), mask);
    }
}

} // namespace

std::string withoutCredentials(std::string text) {
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::max(wordEnd(text, at), at + 1);
        std::string word = text.substr(at, end - at);
        hideInAddress(&word);
        out += word;
        at = end;
    }
    hideOption(&out);
    return out;
}

} // namespace orvo::store
