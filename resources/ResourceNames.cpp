#include "resources/ResourceNames.h"

#include "frame/Kinds.h"
#include "frame/Records.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "resources/Columns.h"
#include "resources/ResourceEdit.h"

#include <cassert>

namespace orvo::resources {

ResourceNames::ResourceNames(const CMDArray& resources, const CMDArray& folders,
                             const ResourceEdit& edit, const std::unique_ptr<ResTreeModel>& tree)
    : m_resources(resources)
    , m_folders(folders)
    , m_edit(edit)
    , m_tree(tree) {}

ResTreeModel& ResourceNames::tree() const {
    assert(m_tree);
    return *m_tree;
}

QString ResourceNames::describe(const QModelIndex& row) const {
    QString caption = textAt(row, ResColumn::Caption);
    const QString name = nameOf(row);
    if (caption.isEmpty() && name.isEmpty()) // typed away: it is known by what it was
        caption = textOf(seekKey(m_folders, tree().getItemKeyLink(row)), field::caption);
    const auto word = [&] {
        if (isFolder(row))
            return tr("папка");
        const ResourceKind* kind = resourceKind(kindOf(row));
        return kind ? Text::tr(kind->one) : tr("ресурс");
    };
    const QString text = word() + Text::tr(" «%1»").arg(caption.isEmpty() ? name : caption);
    return name.isEmpty() || caption.isEmpty() || sameText(name, caption)
               ? text
               : text + QStringLiteral(" (%1)").arg(name);
}

QString ResourceNames::resourceRefusal(const QString& name, const QModelIndex& row) const {
    if (name.isEmpty())
        return tr("Свойство Объект не может быть пустым. Данные не сохранены.");
    // Unique among all of its kind, in whatever folder. What this window has saved a moment ago is
    // in its rows before it is in the table.
    const int type = kindOf(row);
    bool taken = seek(m_resources, 2, KeyValues().integer(type).text(name)) != nullptr;
    for (const QString& key : m_edit.expected()) {
        const QModelIndex saved = tree().findIndexByKey(key);
        taken = taken || (saved.isValid() && !isFolder(saved) && kindOf(saved) == type &&
                          saved != row.siblingAtColumn(0) && sameText(nameOf(saved), name));
    }
    return taken ? tr("Такой ресурс уже существует. Данные не сохранены.") : QString();
}

QString ResourceNames::folderRefusal(const QString& caption, const QModelIndex& row) const {
    if (caption.isEmpty())
        return tr("Свойство \"Имя папки\" не может быть пустым. Данные не сохранены.");
    // A folder that is saved again is among these itself: its old name is taken.
    const QString parentKey = textAt(row, ResColumn::FolderKey);
    const bool taken = hasFolderRow(row.parent(), caption, textAt(row, ResColumn::KeyLink)) ||
                       hasFolderRecord(folderLinks(parentKey, kindOf(row)), caption, QString());
    return taken
               ? tr("Папка с таким именем уже существует у данного родителя. Данные не сохранены.")
               : QString();
}

QStringList ResourceNames::folderLinks(const QString& folderKey, int type) {
    const QString files = QString::fromLatin1(rowkey::files);
    const bool top = folderKey.isEmpty() || sameText(folderKey, files);
    return type == Kind::File && top ? QStringList{QString(), files} : QStringList{folderKey};
}

bool ResourceNames::hasFolderRow(const QModelIndex& parent, const QString& caption,
                                 const QString& exceptKey) const {
    // What this window has just named is in its rows before it is in the table.
    for (int number = 0; number < tree().rowCount(parent); ++number) {
        const QModelIndex row = tree().index(number, 0, parent);
        if (!isFolder(row))
            break; // folders come first
        if (sameText(textAt(row, ResColumn::Caption), caption) &&
            !sameText(textAt(row, ResColumn::KeyLink), exceptKey))
            return true;
    }
    return false;
}

bool ResourceNames::hasFolderRecord(const QStringList& links, const QString& caption,
                                    const QString& exceptKey) const {
    bool found = false;
    for (const QString& link : links)
        walkGroup(m_folders, 3, KeyValues().textOrNull(link), [&](const MDRData* record) {
            if (!holdsText(record, field::ParentKey, link))
                return false;
            found = holdsText(record, field::caption, caption) &&
                    !holdsText(record, field::KeyLink, exceptKey);
            return !found;
        });
    return found;
}

bool ResourceNames::hasNamesake(const QModelIndex& folder, bool isFolder, const QString& name,
                                const QString& exceptKey) const {
    const QStringList links = folderLinks(tree().getItemKeyLink(folder), Kind::File);
    if (isFolder)
        return hasFolderRow(folder, name, exceptKey) || hasFolderRecord(links, name, exceptKey);
    bool found = false;
    for (const QString& link : links)
        walkGroup(m_resources, 1, KeyValues().integer(Kind::File).textOrNull(link).text(name),
                  [&](const MDRData* record) {
                      if (integerOf(record, field::type_) != Kind::File ||
                          !holdsText(record, field::MenuResourceFolderKey, link) ||
                          !holdsText(record, field::name_, name))
                          return false;
                      // Names that differ in case are two files on every disk.
                      found = textOf(record, field::name_) == name &&
                              !holdsText(record, field::KeyLink, exceptKey);
                      return !found;
                  });
    return found;
}

bool ResourceNames::isAmbiguous(const QModelIndex& row) const {
    const int kind = kindOf(row);
    const QString name = nameOf(row);
    int namesakes = 0;
    walkGroup(m_resources, 2, KeyValues().integer(kind).text(name), [&](const MDRData* record) {
        if (integerOf(record, field::type_) != kind || !holdsText(record, field::name_, name))
            return false;
        // Files are found by their folder, too.
        if (kind != Kind::File ||
            folderLinks(textAt(row, ResColumn::FolderKey), kind)
                .contains(textOf(record, field::MenuResourceFolderKey), Qt::CaseInsensitive))
            ++namesakes;
        return namesakes < 2;
    });
    return namesakes > 1;
}

} // namespace orvo::resources
