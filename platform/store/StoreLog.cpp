// Places in the change log and their proof, alike in every kind of store.
#include "platform/store/StoreCore.h"

#include "frame/StdText.h"
#include "platform/store/Names.h"

#include <QCryptographicHash>
#include <QString>
#include <QSysInfo>

#include <algorithm>
#include <charconv>

namespace orvo::store {

namespace {

ChangeQuery changeOf(int64_t id) {
    ChangeQuery query;
    query.id = id;
    return query;
}

/// A name for the log: on one line, and cut at a character.
std::string shortName(const std::string& name) {
    constexpr size_t longest = 64;
    std::string text = withoutControls(validUtf8(name), ' ');
    size_t length = std::min(text.size(), longest);
    while (length < text.size() && length > 0 &&
           (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        --length;
    return text.substr(0, length);
}

/// Tells a proof of the head alone from one of the whole change.
constexpr char headMark[] = "head:";
/// The proof of a change that is pruned: a log that was not pruned so far lacks what came before,
/// too. No change has it.
constexpr char prunedProof[] = "pruned";

std::string digest(const Change& change, std::initializer_list<const std::string*> texts) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const auto add = [&](const void* bytes, size_t size) {
        hash.addData(static_cast<const char*>(bytes), static_cast<int>(size));
    };
    add(&change.id, sizeof change.id);
    add(&change.code, sizeof change.code);
    add(&change.time, sizeof change.time);
    for (const std::string* text : texts) {
        const uint64_t size = text->size(); // or two texts could be cut elsewhere
        add(&size, sizeof size);
        add(text->data(), text->size());
    }
    return hash.result().toHex().toStdString();
}

} // namespace

bool StoreCore::isOfHead(const LogCursor& cursor) {
    return cursor.proof.starts_with(headMark);
}

StoreCore::StoreCore(std::string login, const OpenOptions& options)
    : m_files(*this)
    , m_login(std::move(login))
    , m_origin{
          shortName(options.client), shortName(QSysInfo::machineHostName().toStdString()), 0, {}} {}

std::string StoreCore::listText(const std::vector<int64_t>& groups) {
    std::string list;
    for (const int64_t group : groups)
        list += (list.empty() ? "" : ",") + std::to_string(group);
    return list;
}

std::vector<int64_t> StoreCore::groupsIn(std::string_view list) {
    std::vector<int64_t> groups;
    for (const char *at = list.data(), *end = at + list.size(); at < end;) {
        int64_t group = 0;
        const auto [next, error] = std::from_chars(at, end, group);
        if (error != std::errc() || group <= 0)
            break; // written by hand
        groups.push_back(group);
        at = next == end ? end : next + 1;
    }
    return groups;
}

LogCursor::LogCursor(const Change& change) : id(change.id), proof(proofOf(change)) {}

std::string proofOf(const Change& change) {
    return digest(change,
                  {&change.table, &change.key, &change.login, &change.after, &change.before});
}

std::string proofOfHead(const Change& change) {
    return headMark + digest(change, {&change.table, &change.key, &change.login});
}

Status StoreCore::readDesktopLog(std::string_view /*desktop*/, int limit, LogCursor* cursor,
                                 std::vector<Change>* changes, bool* more) {
    std::vector<Change> read;
    Status status = readLog(*cursor, limit, &read);
    if (!status.ok())
        return status;
    if (!read.empty())
        *cursor = LogCursor(read.back());
    *more = read.size() == static_cast<size_t>(std::max(limit, 0));
    changes->swap(read);
    return status;
}

Status StoreCore::checkCursor(const LogCursor& cursor, int64_t pruned, int64_t newest,
                              std::vector<Change>* changes) {
    const bool proved = !cursor.proof.empty();
    const std::string place = StdText::tr("события ") + std::to_string(cursor.id);
    if (cursor.id < pruned || (cursor.id > newest && !proved))
        // Beyond the end: the cursor was taken before the store was recreated or restored from a
        // backup.
        return {LogPruned, std::string(logName()) + StdText::tr(" не достаёт до ") + place +
                               StdText::tr(": он начинается после ") + std::to_string(pruned)};
    if (!proved)
        return {};
    if (!changes->empty() && changes->front().id == cursor.id) {
        const Change& own = changes->front();
        const bool same = (isOfHead(cursor) ? proofOfHead(own) : proofOf(own)) == cursor.proof;
        changes->erase(changes->begin());
        if (same)
            return {};
    } else if (cursor.id == pruned) {
        return {}; // pruned exactly up to it
    }
    return {
        LogReplaced,
        std::string(logName()) + StdText::tr(" не содержит прочитанного ") + place +
            StdText::tr(
                ": хранилище вернулось к более раннему состоянию, последние изменения потеряны")};
}

Status StoreCore::logEnd(LogCursor* cursor) {
    return guarded([&]() -> Status {
        LogCursor end;
        Status status = logPosition(&end.id);
        std::vector<Change> last;
        if (status.ok())
            status = selectChanges(changeOf(end.id), &last);
        if (!status.ok())
            return status;
        if (!last.empty())
            end = LogCursor(last.front());
        else if (end.id > 0)
            end.proof = prunedProof;
        *cursor = std::move(end);
        return {};
    });
}

Status StoreCore::outcomeOf(const Written& written, Outcome* outcome) {
    return guarded([&]() -> Status {
        *outcome = Outcome::Unknown;
        if (written.last.proof.empty() && written.call.empty())
            return {};
        std::vector<Change> found;
        ChangeQuery wanted = changeOf(written.last.id);
        if (written.last.proof.empty()) { // nobody was told what the call left
            wanted.id.reset();
            wanted.above = written.since;
            wanted.call = written.call;
        }
        Status status = selectChanges(wanted, &found);
        if (!status.ok())
            return status;
        if (!found.empty()) {
            const bool same =
                written.last.proof.empty() || proofOf(found.front()) == written.last.proof;
            *outcome = same ? Outcome::Saved : Outcome::NotSaved;
            return {};
        }
        const int64_t place = written.last.proof.empty() ? written.since : written.last.id - 1;
        status = readLog(place, 0, &found);
        if (status.ok() || status.code == LogReplaced)
            *outcome = Outcome::NotSaved;
        else if (status.code != LogPruned)
            return status;
        else {
            int64_t newest = 0;
            if (status = logPosition(&newest); !status.ok())
                return status;
            if (newest < place) // not pruned: the log ends before it
                *outcome = Outcome::NotSaved;
        }
        return {};
    });
}

Status StoreCore::history(const LogQuery& query, int limit, std::vector<Change>* changes) {
    return guarded([&]() -> Status {
        for (const std::string* text : {&query.table, &query.key})
            if (text->find('\0') != std::string::npos)
                return {BadArguments,
                        std::string(logName()) + StdText::tr(": нулевой знак в условии")};
        ChangeQuery wanted;
        static_cast<LogQuery&>(wanted) = query;
        wanted.limit = std::max(limit, 0);
        std::vector<Change> result;
        const Status status = selectChanges(wanted, &result);
        if (status.ok())
            changes->swap(result);
        return status;
    });
}

} // namespace orvo::store
