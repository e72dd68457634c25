#include "catalogue/Uses.h"

#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "history/RecordWords.h"
#include "platform/store/Names.h"

#include <QSet>

#include <algorithm>
#include <set>

namespace orvo::catalogue {

namespace {

class Collector {
public:
    explicit Collector(const Catalogue& catalogue) : m_catalogue(catalogue) {}

    void add(const Subject& subject) {
        m_meant = subject;
        if (!subject.icon.isEmpty())
            return addIcon(subject.icon.toStdString());
        const std::string table = subject.table.toStdString();
        if (!store::findTable(table))
            return;
        Record record = m_catalogue.find(table.c_str(), subject.key.toStdString());
        if (!record && !subject.login.isEmpty())
            m_catalogue.forEachWith(table::Users, field::login_, subject.login.toStdString(),
                                    [&](const Record& person, int) {
                                        record = person;
                                        return false;
                                    });
        if (record && record.isIn(table::Menu))
            addOfElement(record);
        else if (record)
            addOf(record);
        else if (table == table::MenuResource || table == table::Users)
            addLinks(*store::findTable(table), subject.key.toStdString());
    }

    Uses uses(int most) const {
        Uses all;
        all.meant = m_meant;
        all.exists = m_exists;
        all.isPerson = m_meant.table == QLatin1String(table::Users);
        all.what = m_what;
        all.count = static_cast<int>(m_places.size());
        std::set<std::string> desktops;
        for (const uint32_t number : m_places) {
            const Record place = m_catalogue.at(number);
            if (!place.isIn(table::Menu))
                ++all.forms;
            else if (const std::string desktop = place.text(field::FolderKey); !desktop.empty())
                desktops.insert(store::foldedKey(desktop));
            if (all.places.size() < most)
                all.places << describe(m_catalogue, place);
        }
        all.desktops = static_cast<int>(desktops.size());
        std::sort(all.places.begin(), all.places.end(), [](const Found& one, const Found& other) {
            const int path = one.path.compare(other.path, Qt::CaseInsensitive);
            const int name = path != 0 ? path : one.name.compare(other.name, Qt::CaseInsensitive);
            return name != 0 ? name < 0 : one.key < other.key;
        });
        return all;
    }

private:
    void name(const Record& record) {
        m_exists = true;
        if (!m_what.isEmpty())
            return;
        const Found found = record.isIn(table::Users) ? describe(m_catalogue, record) : Found();
        if (!found.login.isEmpty() && found.name != found.login)
            m_what = QStringLiteral("%1 (%2)").arg(found.name, found.login);
        else
            m_what = history::recordWords(record.table(), record.values(), record.key());
    }

    void addOf(const Record& record) {
        name(record);
        addLinks(record.table(), record.key());
        const int folder = record.table().find(field::MenuResourceFolderKey);
        if (record.isIn(table::MenuResource) && record.integer(field::type_) == Kind::File &&
            isIconFolder(m_catalogue.linked(record, folder)))
            addWithIcon(record.text(field::name_));
    }

    void addOfElement(const Record& element) {
        const store::TableDef& resources = *store::findTable(table::MenuResource);
        const int link = element.table().find(field::MenuResourceKey);
        if (!element.isNull(link)) {
            const std::string key = element.text(link);
            m_meant = {QString::fromLatin1(resources.name), QString::fromStdString(key)};
            if (const Record resource = m_catalogue.linked(element, link))
                addOf(resource);
            else
                addLinks(resources, key);
        } else if (const std::string icon = element.text(field::ico); !icon.empty()) {
            m_meant = {};
            m_meant.icon = QString::fromStdString(icon);
            addIcon(icon);
        } else {
            name(element);
        }
    }

    void addIcon(const std::string& icon) {
        m_exists = true;
        m_what = Text::tr("иконка %1").arg(history::quoted(QString::fromStdString(icon)));
        addWithIcon(icon);
    }

    /// The elements that open a resource, the forms that a person holds: all that a link can say of
    /// either.
    void addLinks(const store::TableDef& target, const std::string& key) {
        m_catalogue.forEachLink(target, key, [this](const Record& namer, int) {
            m_places.insert(namer.number());
            return true;
        });
    }

    void addWithIcon(const std::string& name) {
        for (const char* table : {table::Menu, table::MenuResource})
            m_catalogue.forEachWith(table, field::ico, name, [this](const Record& bearer, int) {
                m_places.insert(bearer.number());
                return true;
            });
    }

    const Catalogue& m_catalogue;
    Subject m_meant;
    std::set<uint32_t> m_places; ///< numbers of records
    bool m_exists = false;
    QString m_what;
};

} // namespace

Uses usesOf(const Catalogue& catalogue, const std::vector<Subject>& subjects, int most) {
    Collector collector(catalogue);
    for (const Subject& subject : subjects)
        collector.add(subject);
    return collector.uses(most);
}

namespace {

QString counted(int count, const char* one, const char* few, const char* many) {
    return QStringLiteral("%1 %2").arg(count).arg(history::numeralForm(
        static_cast<size_t>(count), Text::tr(one), Text::tr(few), Text::tr(many)));
}

} // namespace

QString usesBrief(const Uses& uses) {
    QStringList parts;
    if (const int elements = uses.count - uses.forms; elements > 0)
        parts << counted(elements, QT_TRANSLATE_NOOP("orvo", "элемент"),
                         QT_TRANSLATE_NOOP("orvo", "элемента"),
                         QT_TRANSLATE_NOOP("orvo", "элементов"));
    if (uses.forms > 0)
        parts << counted(uses.forms, QT_TRANSLATE_NOOP("orvo", "ресурс"),
                         QT_TRANSLATE_NOOP("orvo", "ресурса"),
                         QT_TRANSLATE_NOOP("orvo", "ресурсов"));
    return parts.isEmpty() ? Text::tr("не используется") : parts.join(QStringLiteral(", "));
}

QString usesWords(const Uses& uses) {
    if (uses.isPerson && uses.count == 0)
        return Text::tr("ничего не заблокировано");
    if (uses.isPerson)
        return QStringLiteral("%1 %2").arg(
            uses.count % 10 == 1 && uses.count % 100 != 11 ? Text::tr("заблокирован")
                                                           : Text::tr("заблокировано"),
            counted(uses.count, QT_TRANSLATE_NOOP("orvo", "ресурс"),
                    QT_TRANSLATE_NOOP("orvo", "ресурса"), QT_TRANSLATE_NOOP("orvo", "ресурсов")));
    if (uses.count == 0)
        return Text::tr("нигде не используется");
    QStringList parts;
    if (const int elements = uses.count - uses.forms; elements > 0) {
        QString part = counted(elements, QT_TRANSLATE_NOOP("orvo", "элемент меню"),
                               QT_TRANSLATE_NOOP("orvo", "элемента меню"),
                               QT_TRANSLATE_NOOP("orvo", "элементов меню"));
        if (uses.desktops > 0)
            part += Text::tr(" на ") + counted(uses.desktops,
                                               QT_TRANSLATE_NOOP("orvo", "рабочем столе"),
                                               QT_TRANSLATE_NOOP("orvo", "рабочих столах"),
                                               QT_TRANSLATE_NOOP("orvo", "рабочих столах"));
        parts << part;
    }
    if (uses.forms > 0)
        parts << counted(uses.forms, QT_TRANSLATE_NOOP("orvo", "ресурс"),
                         QT_TRANSLATE_NOOP("orvo", "ресурса"),
                         QT_TRANSLATE_NOOP("orvo", "ресурсов"));
    return parts.join(QStringLiteral(", "));
}

QString placeWords(const Found& place) {
    const QString words = place.noun + QLatin1Char(' ') + history::quoted(place.name);
    return place.path.isEmpty() ? words : QStringLiteral("%1 (%2)").arg(words, place.path);
}

bool isIconFolder(const Record& folder) {
    struct Numbers {
        const store::TableDef* table = store::findTable(table::MenuResourceFolder);
        int kind = table->find(field::type_);
        int parent = table->find(field::ParentKey);
        int caption = table->find(field::caption);
    };
    static const Numbers f;
    if (!folder || &folder.table() != f.table || folder.integer(f.kind) != Kind::File ||
        !folder.cp1251(f.parent).empty())
        return false;
    const std::string_view caption = folder.cp1251(f.caption), wanted = iconFolder;
    return std::equal(
        caption.begin(), caption.end(), wanted.begin(), wanted.end(), [](char one, char other) {
            return foldedByte(static_cast<uint8_t>(one)) == foldedByte(static_cast<uint8_t>(other));
        });
}

} // namespace orvo::catalogue
