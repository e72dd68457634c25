#include "apps/client/MirrorChanges.h"

#include "frame/Vocabulary.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cassert>

namespace orvo::app {

namespace {

QJsonObject fieldsOf(const std::string& json) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
}

/// Of an insert or a delete, which tell all fields.
bool isOfFiles(const QJsonObject& record) {
    return !record.contains(field::type_) || record[field::type_].toInt() == Kind::File;
}

std::optional<std::string> textAt(const QJsonObject& fields, const char* name) {
    const auto found = fields.find(QLatin1String(name));
    if (found == fields.end())
        return std::nullopt;
    return found->toString().toStdString();
}

} // namespace

MirrorChanges MirrorChanges::everything(Recopy recopy) {
    MirrorChanges all;
    all.m_recopy = recopy;
    all.compareWhole();
    return all;
}

bool MirrorChanges::add(const store::Change& change) {
    assert(isLimited());
    // The file area is the files, the folders that make their paths and the records that name them.
    bool concerned = true;
    if (change.table == table::MenuResourceFile)
        addContent(change);
    else if (change.table == table::MenuResourceFolder)
        concerned = addFolder(change);
    else if (change.table == table::MenuResource)
        concerned = addResource(change);
    else
        return false;
    if (concerned && m_since == 0)
        m_since = change.id;
    limit();
    return concerned;
}

bool MirrorChanges::addFolder(const store::Change& change) {
    if (change.code == OrvoEventUpdate) {
        const QJsonObject after = fieldsOf(change.after);
        if (after.contains(field::type_))
            compareWhole();
        else if (after.contains(field::caption) || after.contains(field::ParentKey))
            m_folders.insert(change.key);
        else
            return false;
        return true;
    }
    if (!isOfFiles(fieldsOf(change.after.size() > 2 ? change.after : change.before)))
        return false;
    compareWhole();
    return true;
}

bool MirrorChanges::addResource(const store::Change& change) {
    const QJsonObject after = fieldsOf(change.after);
    const QJsonObject before = fieldsOf(change.before);
    if (change.code == OrvoEventUpdate) {
        if (!after.contains(field::name_) && !after.contains(field::MenuResourceFolderKey) &&
            !after.contains(field::type_))
            return false;
    } else if (!isOfFiles(change.code == OrvoEventDelete ? before : after)) {
        return false;
    }
    m_resources[change.key];
    return true;
}

void MirrorChanges::learn(const store::Change& change) {
    const auto known = m_resources.find(change.key);
    if (change.table != table::MenuResource || known == m_resources.end())
        return;
    const QJsonObject before = fieldsOf(change.before);
    if (const auto name = textAt(before, field::name_))
        known->second.names.insert(*name);
    if (const auto folder = textAt(before, field::MenuResourceFolderKey))
        known->second.folders.insert(*folder);
    limit();
}

void MirrorChanges::addContent(const store::Change& change) {
    const QJsonObject after = fieldsOf(change.after);
    // An update that tells of neither size nor time is one of the bytes alone, made by hand.
    const bool isPlain = change.code != OrvoEventUpdate || after.contains(field::size) ||
                         after.contains(field::time);
    m_recopy = std::max(m_recopy, isPlain ? Recopy::Untimed : Recopy::All);
    if (change.code == OrvoEventUpdate) { // which does not tell whose content it is
        compareWhole();
        return;
    }
    const auto resource = textAt(change.code == OrvoEventDelete ? fieldsOf(change.before) : after,
                                 field::MenuResourceKey);
    if (resource && !resource->empty())
        m_resources[*resource].content = true;
}

void MirrorChanges::merge(const MirrorChanges& later) {
    assert(later.isLimited());
    m_recopy = std::max(m_recopy, later.m_recopy);
    if (m_since == 0)
        m_since = later.m_since;
    for (const auto& [key, after] : later.m_resources) {
        Before& record = m_resources[key];
        record.names.insert(after.names.begin(), after.names.end());
        record.folders.insert(after.folders.begin(), after.folders.end());
        record.content = record.content || after.content;
    }
    m_folders.insert(later.m_folders.begin(), later.m_folders.end());
    m_whole = m_whole || later.m_whole;
    limit();
}

void MirrorChanges::compareWhole() {
    m_whole = true;
    limit();
}

bool MirrorChanges::isLimited() const {
    return m_resources.size() + m_folders.size() <= (m_whole ? 0 : most) && // 1, 2
           std::all_of(m_resources.begin(), m_resources.end(), [](const auto& entry) {
               return (entry.second.names.size() + 1) * (entry.second.folders.size() + 1) <= most;
           });
}

void MirrorChanges::limit() {
    m_whole = m_whole || !isLimited();
    if (m_whole) {
        m_resources.clear();
        m_folders.clear();
    }
}

} // namespace orvo::app
