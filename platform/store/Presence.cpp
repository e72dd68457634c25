#include "platform/store/Presence.h"

#include "platform/store/Kinds.h"
#include "platform/store/Names.h"
#include "platform/store/Schema.h"
#include "platform/store/StoreCore.h"
#include "platform/store/StoreUrl.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <tuple>
#include <unistd.h>

namespace orvo::store {

namespace {

constexpr std::string_view firstLine = "orvo-presence 1";

/// A text that cannot leave its line, cut between letters.
std::string bounded(std::string_view text) {
    std::string cut(text.substr(0, longestPresenceText));
    if (cut.size() < text.size())
        while (!cut.empty() && (text[cut.size()] & 0xC0) == 0x80)
            cut.pop_back();
    return withoutControls(validUtf8(std::move(cut)), ' ');
}

/// Takes what stands before the next separator.
std::string_view takeTo(std::string_view* rest, char separator) {
    const size_t at = rest->find(separator);
    const std::string_view taken = rest->substr(0, at);
    rest->remove_prefix(at == std::string_view::npos ? rest->size() : at + 1);
    return taken;
}

bool parseTime(std::string_view text, double* time) {
    constexpr int64_t year10000 = 253402300800;
    int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc() || end != text.data() + text.size() || seconds < 0 ||
        seconds >= year10000)
        return false;
    *time = static_cast<double>(seconds);
    return true;
}

std::string timeText(double time) {
    return std::to_string(static_cast<int64_t>(time));
}

bool parseEdit(std::string_view text, OpenEdit* edit) {
    const std::string_view since = takeTo(&text, ' ');
    const std::string_view table = takeTo(&text, ' ');
    const std::string_view key = takeTo(&text, ' ');
    if (!parseTime(since, &edit->since) || findTable(table) == nullptr ||
        key.size() > longestPresenceText || !isKey(key))
        return false;
    edit->table = findTable(table)->name;
    edit->key = key == "-" ? std::string() : std::string(key);
    edit->what = bounded(text);
    return true;
}

bool isSendable(const OpenEdit& edit) {
    return findTable(edit.table) != nullptr &&
           (edit.key.empty() || (edit.key.size() <= longestPresenceText && isKey(edit.key) &&
                                 edit.key.find(' ') == std::string::npos));
}

} // namespace

std::string presenceText(const PresenceEntry& entry) {
    std::string text(firstLine);
    text += "\nlogin " + bounded(entry.login) + "\nplace " + bounded(entry.place) + "\nsince " +
            timeText(entry.since);
    size_t edits = 0;
    for (const OpenEdit& edit : entry.edits)
        if (isSendable(edit) && edits++ < mostOpenEdits)
            text += "\nedit " + timeText(edit.since) + ' ' + edit.table + ' ' +
                    (edit.key.empty() ? "-" : edit.key) + ' ' + bounded(edit.what);
    return text;
}

bool parsePresence(std::string_view text, PresenceEntry* entry) {
    if (text.size() > longestPresenceEntry || takeTo(&text, '\n') != firstLine)
        return false;
    PresenceEntry read;
    bool timed = false;
    while (!text.empty()) {
        std::string_view value = takeTo(&text, '\n');
        const std::string_view name = takeTo(&value, ' ');
        OpenEdit edit;
        if (name == "login")
            read.login = bounded(value);
        else if (name == "place")
            read.place = bounded(value);
        else if (name == "since")
            timed = parseTime(value, &read.since);
        else if (name == "edit" && read.edits.size() < mostOpenEdits && parseEdit(value, &edit))
            read.edits.push_back(std::move(edit));
    }
    if (!timed || read.login.empty())
        return false;
    *entry = std::move(read);
    return true;
}

void sortPresence(std::vector<PresenceEntry>* entries) {
    std::sort(entries->begin(), entries->end(), [](const PresenceEntry& a, const PresenceEntry& b) {
        return std::tie(a.login, a.since, a.place) < std::tie(b.login, b.since, b.place);
    });
}

PresenceEntry ownPresence(const std::string& login) {
    PresenceEntry own;
    own.login = login;
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) == 0)
        own.place = name;
    own.since =
        static_cast<double>(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
    return own;
}

std::unique_ptr<Presence> openPresence(const std::string& url, const std::string& login,
                                       Status* status) {
    std::unique_ptr<Presence> presence;
    *status = guarded([&]() -> Status {
        StoreUrl address;
        Status done = address.parse(url);
        if (done.ok())
            presence = findKind(address.text())->presence(address.text(), login, &done);
        return done;
    });
    return presence;
}

} // namespace orvo::store
