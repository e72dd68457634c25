#include "platform/store/Names.h"

#include "platform/mdx/MdxBuild.h"
#include "platform/store/Store.h"

#include <algorithm>
#include <array>
#include <sys/random.h>
#include <tuple>

namespace orvo::store {

namespace {} // namespace

size_t sequenceLength(std::string_view text) {
    const auto at = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = at(0);
    if (lead < 0x80)
        return 1;
    const size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                          : lead >= 0xE0 && lead <= 0xEF ? 3
                          : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                         : 0;
    if (length == 0 || text.size() < length)
        return 0;
    // The second byte also keeps out overlong forms, surrogates and what lies past U+10FFFF.
    const unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (at(1) < low || at(1) > high)
        return 0;
    for (size_t i = 2; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80)
            return 0;
    }
    return length;
}

bool isKey(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

std::string newKey() {
    std::array<unsigned char, 16> random{};
    if (getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size()))
        return {};
    std::string key;
    for (const unsigned char byte : random) {
        key += "0123456789ABCDEF"[byte >> 4];
        key += "0123456789ABCDEF"[byte & 15];
    }
    return key;
}

std::string foldedKey(std::string_view key) {
    std::string folded(key);
    for (char& c : folded) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return folded;
}

bool sameText(std::string_view a, std::string_view b) {
    return a == b || mdx::compareText(mdx::toCp1251(a), mdx::toCp1251(b)) == 0;
}

bool isShowable(std::string_view text) {
    return mdx::toUtf8(mdx::toCp1251(text)) == text;
}

std::optional<std::string> foldedName(std::string_view name) {
    constexpr size_t length = 2; // of each of those letters
    const std::string_view upper(upperLetters);
    std::string folded = foldedKey(name.substr(0, name.find('\0'))); // as far as it is shown
    if (mdx::toCp1251(folded).find('?') != std::string::npos)
        return std::nullopt;
    for (size_t i = 0; i + length <= folded.size(); ++i) {
        const size_t found = upper.find(std::string_view(folded).substr(i, length));
        if (found != std::string_view::npos && found % length == 0)
            folded.replace(i, length, &lowerLetters[found], length);
    }
    return folded;
}

std::string validUtf8(std::string text) {
    for (size_t i = 0; i < text.size();) {
        if (static_cast<unsigned char>(text[i]) < 0x80) {
            ++i;
            continue;
        }
        const size_t length = sequenceLength(std::string_view(text).substr(i));
        if (length == 0)
            text[i] = '?';
        i += std::max<size_t>(length, 1);
    }
    return text;
}

size_t controlLength(std::string_view text) {
    const auto at = [&](size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0xFF;
    };
    if (at(0) < 0x20 || at(0) == 0x7F)
        return 1;
    return at(0) == 0xC2 && at(1) >= 0x80 && at(1) < 0xA0 ? 2 : 0;
}

std::string withoutControls(std::string_view text, char instead) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const size_t length = controlLength(text.substr(i));
        out += length > 0 ? instead : text[i];
        i += std::max<size_t>(length, 1);
    }
    return out;
}

std::string shown(std::string_view text) {
    constexpr size_t limit = 120;
    const bool cut = text.size() > limit;
    std::string out = std::string(text.substr(0, limit));
    if (cut) { // not in the middle of a letter
        while (!out.empty() && (static_cast<unsigned char>(out.back()) & 0xC0) == 0x80)
            out.pop_back();
        if (!out.empty() && static_cast<unsigned char>(out.back()) >= 0xC0)
            out.pop_back();
    }
    out = withoutControls(validUtf8(std::move(out)), '?');
    return "\"" + out + (cut ? "…\"" : "\"");
}

std::string formName(const std::vector<std::string_view>& files) {
    if (files.empty())
        return {};
    const auto isHandle = [](std::string_view name) { return !name.empty() && name.back() == '_'; };
    // What all names begin with.
    const std::string first = mdx::toCp1251(files.front());
    size_t common = first.size();
    for (std::string_view file : files) {
        const std::string name = mdx::toCp1251(file);
        size_t length = 0;
        while (length < common && length < name.size() &&
               mdx::compareText(name.substr(length, 1), first.substr(length, 1)) == 0)
            ++length;
        common = length;
    }
    // A form is chosen by one of its files; the others were found because they begin like it.
    const auto rank = [&](std::string_view name) {
        const size_t length = mdx::toCp1251(name).size();
        const bool leads = length - (isHandle(name) ? 1 : 0) <= common;
        return std::make_tuple(!leads, !isHandle(name), length, name);
    };
    return std::string(
        *std::min_element(files.begin(), files.end(), [&](std::string_view a, std::string_view b) {
            return rank(a) < rank(b);
        }));
}

bool isPlainFileName(std::string_view name) {
    if (name.empty() || name == "." || name == "..")
        return false;
    for (size_t i = 0; i < name.size(); ++i)
        if (name[i] == '/' || name[i] == '\\' || controlLength(name.substr(i)) > 0)
            return false;
    return true;
}

} // namespace orvo::store
