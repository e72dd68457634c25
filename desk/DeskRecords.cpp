#include "desk/DeskRecords.h"

#include "desk/Columns.h"
#include "frame/CommonFunctions.h"
#include "frame/Notification.h"
#include "frame/Records.h"
#include "frame/ScratchTable.h"
#include "frame/Siblings.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"

#include <QSet>
#include <QStringList>

#include <utility>

namespace orvo::desk {

namespace {

constexpr int byParent = 1;
constexpr int deepestPath = 1000; ///< of folders; more is a circle

QString folded(const QStringList& path) {
    return path.join(QLatin1Char('/')).toCaseFolded();
}

/// Captions from the top down to a record of `MenuFolder`.
QStringList pathOfFolder(const CMDArray& folders, const MDRData* record) {
    QStringList path;
    for (int depth = 0; record && depth < deepestPath; ++depth) {
        path.prepend(textOf(record, field::caption).trimmed());
        record = seekKey(folders, textOf(record, field::ParentKey));
    }
    return path;
}

} // namespace

bool DeskRecords::find(const QString& name, FoundDesktop* found, QString* error) {
    CMDArray folders;
    if (!GetTableRecords(m_module.m_app->m_session, table::MenuFolder, folders, error))
        return false;
    setKeys(folders);
    QStringList parts = name.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (QString& part : parts)
        part = part.trimmed();
    const QString path = folded(parts);
    FoundDesktop byKey, byPath, byCaption;
    const auto count = [](FoundDesktop& hit, const MDRData* record) {
        hit.key = textOf(record, field::KeyLink);
        hit.caption = textOf(record, field::caption);
        ++hit.count;
    };
    walkAll(folders, 0, [&](const MDRData* record) {
        if (flagOf(record, field::isFolder))
            return true;
        if (holdsText(record, field::KeyLink, name))
            count(byKey, record);
        else if (folded(pathOfFolder(folders, record)) == path)
            count(byPath, record);
        else if (sameText(textOf(record, field::caption).trimmed(), name.trimmed()))
            count(byCaption, record);
        return true;
    });
    *found = byKey.count > 0 ? byKey : byPath.count > 0 ? byPath : byCaption;
    return true;
}

bool DeskRecords::open(const QString& desktopKey) {
    const QByteArray sql =
        toRecord(QStringLiteral("select * from Menu where FolderKey = '%1'").arg(desktopKey));
    MDArray* fetched = m_module.m_app->m_session->SqlRequest(sql.constData());
    if (!fetched)
        return false;
    m_elements.Attach(fetched);
    setKeys(m_elements, keylist::Menu);
    m_resources.clear();
    m_hasGaps = false;
    m_unsavedKey.clear();
    m_unsavedIsOurs = false;
    m_desktop = desktopKey;
    readResources();
    return true;
}

void DeskRecords::check([[maybe_unused]] const QString& key) const {
    Q_ASSERT(!element(key) || holdsText(element(key), field::FolderKey, m_desktop)); // 1
    Q_ASSERT(!m_unsavedIsOurs || element(m_unsavedKey));                             // 2
}

/// Those that are not found here are asked for one by one, if they are shown: a failure is met
/// then.
void DeskRecords::readResources() {
    CToolRecByKeys tool(&m_module);
    tool.tableName = table::MenuResource;
    walkAll(m_elements, 0, [&](const MDRData* record) {
        if (!isEmptyText(record, field::MenuResourceKey))
            tool.keys << textOf(record, field::MenuResourceKey);
        return true;
    });
    tool.keys.removeDuplicates();
    if (tool.keys.isEmpty())
        return;
    tool.Perform(false);
    walkAll(tool.result, 0, [&](const MDRData* record) {
        m_resources[textOf(record, field::KeyLink).toCaseFolded()] = {resourceIn(record), true,
                                                                      std::nullopt};
        return true;
    });
}

DeskRecords::Resource DeskRecords::resourceIn(const MDRData* record) {
    return {integerOf(record, field::type_), textOf(record, field::name_),
            textOf(record, field::ico), textOf(record, field::params),
            textOf(record, field::MenuResourceFolderKey)};
}

DeskRecords::Answer DeskRecords::fetch(const char* table, const QString& key, CMDArray* into) {
    const QByteArray bytes = toRecord(key);
    CToolRecByKey tool(&m_module);
    tool.tableName = table;
    tool.keyNumber = 0;
    tool.keyValues = {textVar(bytes)};
    tool.keyBits.setBit(0);
    tool.Perform(false);
    if (tool.result.array->keyCount == 0) { // an answer has a key, even without records
        m_hasGaps = true;
        return Answer::None;
    }
    const bool found = recordCount(tool.result) > 0;
    into->Attach(std::exchange(tool.result.array, nullptr));
    return found ? Answer::Record : Answer::NoRecord;
}

const DeskRecords::KnownResource& DeskRecords::resource(const QString& key) {
    KnownResource& known = m_resources[key.toCaseFolded()];
    if (known.isRead)
        return known;
    CMDArray found;
    const Answer answer = fetch(table::MenuResource, key, &found);
    if (answer == Answer::None)
        return known;
    known = {std::nullopt, true, std::nullopt};
    if (answer == Answer::Record)
        known.resource = resourceIn(MDARec(found.array, 0, 0));
    return known;
}

QVector<QVariant> DeskRecords::values(const MDRData* element) {
    QVector<QVariant> values(DeskColumn::Count);
    const QString key = textOf(element, field::KeyLink);
    const bool isUnsaved = !m_unsavedKey.isEmpty() && sameText(key, m_unsavedKey);
    const auto typed = [&](const char* name) {
        return isUnsaved ? m_unsaved.value(QLatin1String(name)) : QVariant();
    };
    const auto text = [&](const char* name) {
        return typed(name).isValid() ? typed(name).toString() : textOf(element, name);
    };
    const auto flag = [&](const char* name) {
        return typed(name).isValid() ? typed(name).toBool() : flagOf(element, name);
    };
    const QString resourceKey = text(field::MenuResourceKey);
    values[DeskColumn::Caption] = text(field::caption);
    values[DeskColumn::Key] = key;
    values[DeskColumn::Params] = text(field::params);
    values[DeskColumn::Icon] = text(field::ico);
    values[DeskColumn::OneCopy] = flag(field::oneCopy);
    values[DeskColumn::Separator] = flag(field::separator);
    values[DeskColumn::Resource] = resourceKey;
    values[DeskColumn::Kind] = int(Kind::None);
    values[DeskColumn::Note] = QString();
    values[DeskColumn::Unsaved] = isUnsaved;
    if (resourceKey.isEmpty())
        return values;
    const KnownResource& known = resource(resourceKey);
    const std::optional<Resource>& own = known.resource;
    values[DeskColumn::Kind] = own ? own->kind : missingResource;
    if (!own) {
        values[DeskColumn::Note] =
            known.isRead ? Text::tr("Ресурс этого элемента удалён.")
                         : Text::tr("Ресурс этого элемента ещё не прочитан: нет связи.");
        return values;
    }
    values[DeskColumn::Name] = own->name;
    // What the element leaves open the resource says.
    if (values[DeskColumn::Icon].toString().isEmpty())
        values[DeskColumn::Icon] = own->icon;
    if (values[DeskColumn::Params].toString().isEmpty())
        values[DeskColumn::Params] = own->params;
    if (m_check)
        values[DeskColumn::Note] = refusal(resourceKey);
    return values;
}

QString DeskRecords::refusal(const QString& resourceKey) {
    const KnownResource& known = resource(resourceKey);
    if (known.refusal || !known.resource)
        return known.refusal.value_or(QString());
    LaunchRequest request;
    request.kind = known.resource->kind;
    request.resource = resourceKey;
    request.name = known.resource->name;
    if (request.kind == Kind::File)
        request.path = pathOf(resourceKey);
    const QString why = m_check(request);
    QString note = why.isEmpty() ? why : Text::tr("Не откроется: %1.").arg(why);
    m_resources[resourceKey.toCaseFolded()].refusal = note;
    return note;
}

void DeskRecords::forgetChecks() {
    for (KnownResource& known : m_resources)
        known.refusal.reset();
}

void DeskRecords::setUnsaved(const QString& key, bool isNew, const QVariantMap& values) {
    if (!sameText(key, m_unsavedKey) && m_unsavedIsOurs) {
        if (MDRData* ours = element(m_unsavedKey))
            m_elements.RecDel(ours);
        m_unsavedIsOurs = false;
    }
    m_unsavedKey = key;
    m_unsaved = values;
    if (key.isEmpty() || !isNew || element(key))
        return;
    RowWriter(m_elements, MDARecNew(m_elements.array))
        .text(field::KeyLink, key)
        .text(field::FolderKey, m_desktop)
        .textOrNull(field::parent, values.value(QLatin1String(field::parent)).toString())
        .integer(field::order_, values.value(QLatin1String(field::order_)).toInt());
    m_unsavedIsOurs = true;
    check(key);
}

QStringList DeskRecords::children(const QString& parent) const {
    QStringList keys;
    // No parent is NULL, or empty text in a store written by other programs, which follows the
    // NULLs.
    walkGroup(m_elements, byParent, parent.isEmpty() ? KeyValues() : KeyValues().text(parent),
              [&](const MDRData* record) {
                  if (!holdsText(record, field::parent, parent))
                      return false;
                  keys << textOf(record, field::KeyLink);
                  return true;
              });
    return keys;
}

QStringList DeskRecords::keys() const {
    QStringList keys;
    walkAll(m_elements, 0, [&](const MDRData* record) {
        keys << textOf(record, field::KeyLink);
        return true;
    });
    return keys;
}

QStringList DeskRecords::elementsOf(const QString& resourceKey) const {
    QStringList keys;
    walkAll(m_elements, 0, [&](const MDRData* record) {
        if (holdsText(record, field::MenuResourceKey, resourceKey))
            keys << textOf(record, field::KeyLink);
        return true;
    });
    return keys;
}

MDRData* DeskRecords::element(const QString& key) const {
    return seekKey(m_elements, key);
}

QString DeskRecords::parentOf(const MDRData* element) const {
    return textOf(element, field::parent);
}

int DeskRecords::position(const MDRData* element) const {
    const QString parent = parentOf(element);
    KeyValues exact;
    addField(exact, element, field::parent);
    addField(exact, element, field::order_);
    return siblingPosition(
        m_elements, byParent, KeyValues().textOrNull(parent), textOf(element, field::KeyLink),
        element, exact,
        [&](const MDRData* record) { return holdsText(record, field::parent, parent); });
}

QString DeskRecords::pathOf(const QString& resourceKey) {
    const std::optional<Resource>& own = resource(resourceKey).resource;
    QStringList path;
    QSet<QString> seen;
    QString folder = own ? own->folder : QString();
    while (!folder.isEmpty() && !seen.contains(folder.toCaseFolded())) {
        seen.insert(folder.toCaseFolded());
        CMDArray found;
        if (fetch(table::MenuResourceFolder, folder, &found) != Answer::Record)
            break;
        const MDRData* record = MDARec(found.array, 0, 0);
        path.prepend(textOf(record, field::caption));
        folder = textOf(record, field::ParentKey);
    }
    return path.join(QLatin1Char('/'));
}

bool DeskRecords::take(const Notification& change) {
    const QString key = change.key();
    MDRData* known = element(key);
    if (m_unsavedIsOurs && sameText(key, m_unsavedKey))
        m_unsavedIsOurs = false; // it is the store's from here on
    switch (change.action()) {
    case OrvoEventDelete:
        if (known)
            m_elements.RecDel(known);
        return known != nullptr;
    case OrvoEventInsert:
        if (!known)
            known = createAndMerge(change.event(), &m_elements);
        else
            known = editAndMerge(change.event(), &m_elements);
        break;
    case OrvoEventUpdate:
        if (known) {
            known = editAndMerge(change.event(), &m_elements);
        } else if (change.hasValueFor(field::FolderKey)) {
            // Moved here from another desktop: the notification brings what changed only.
            CMDArray found;
            if (fetch(table::Menu, key, &found) != Answer::Record)
                return false;
            const MDRData* record = MDARec(found.array, 0, 0);
            if (!holdsText(record, field::FolderKey, m_desktop))
                return false;
            RowWriter(m_elements, MDARecNew(m_elements.array)).copyAll(record);
            known = element(key);
        }
        break;
    default:
        return false;
    }
    if (!known)
        return false;
    if (!holdsText(known, field::FolderKey, m_desktop)) {
        m_elements.RecDel(known);
        return change.action() == OrvoEventUpdate;
    }
    check(key);
    return true;
}

} // namespace orvo::desk
