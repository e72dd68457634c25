#include "apps/client/UnwrittenPane.h"

#include "apps/client/Look.h"
#include "frame/RecordTextValidator.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/store/Schema.h"

#include <QAbstractItemDelegate>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <cstring>
#include <optional>

namespace orvo::app {

namespace {

using client::UnwrittenEntry;

constexpr int idRole = Qt::UserRole;
constexpr int fieldKeyRole = Qt::UserRole + 1;
constexpr int fieldRole = Qt::UserRole + 2;

QString stamp(const QDateTime& time) {
    return time.toString(time.date() == QDate::currentDate() ? QStringLiteral("HH:mm:ss")
                                                             : QStringLiteral("dd.MM.yyyy HH:mm"));
}

QString stateWord(const UnwrittenEntry& entry) {
    switch (entry.state) {
    case UnwrittenEntry::Unknown:
        return Text::tr("Исход неизвестен");
    case UnwrittenEntry::Gone:
        return Text::tr("Записи больше нет");
    case UnwrittenEntry::Conflict:
        return Text::tr("Изменил и другой");
    case UnwrittenEntry::Lost:
        return Text::tr("Потеряно сервером");
    case UnwrittenEntry::Waiting:
        return Text::tr("Ждёт очереди");
    default:
        return Text::tr("Отказано");
    }
}

/// The text of a field in one line that can be edited; none for other values, and for keys.
std::optional<QString> textIn(const store::TableDef& table,
                              const std::vector<client::RecordWrite>& records,
                              const client::FieldWords& field) {
    const store::FieldDef& def = table.fields[static_cast<size_t>(field.field)];
    if (def.link || std::strcmp(def.name, field::FolderKey) == 0)
        return {};
    for (const client::RecordWrite& record : records)
        for (const auto& [number, value] : record.values)
            if (number == field.field && record.key == field.key)
                if (const auto* text = std::get_if<std::string>(&value);
                    text && text->find('\n') == std::string::npos)
                    return QString::fromStdString(*text);
    return {};
}

/// Shows the start of a value, on one line; what is edited is the whole of it, in letters that a
/// record can hold.
class FieldDelegate : public ReadableDelegate {
public:
    using ReadableDelegate::ReadableDelegate;
    QString displayText(const QVariant& value, const QLocale& /*locale*/) const override {
        return oneLine(value.toString(), 1000);
    }
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
        if (auto* line = qobject_cast<QLineEdit*>(editor))
            RecordTextValidator::install(line);
        return editor;
    }
};

/// An editor of a cell is a child of the view's viewport until it is closed.
bool isCellOpen(const QTreeWidget& tree) {
    const QList<QLineEdit*> lines = tree.viewport()->findChildren<QLineEdit*>();
    return std::any_of(lines.begin(), lines.end(),
                       [](const QLineEdit* line) { return line->isVisible(); });
}

} // namespace

UnwrittenPane::UnwrittenPane(client::UnwrittenList& list, QWidget* parent)
    : QWidget(parent)
    , m_list(list)
    , m_tree(new QTreeWidget(this))
    , m_repeat(new QPushButton(this))
    , m_giveUp(new QPushButton(this))
    , m_repeatAll(new QPushButton(Text::tr("Повторить всё", "запись"), this)) {
    setObjectName(QStringLiteral("unwrittenPane"));
    m_tree->setObjectName(QStringLiteral("unwrittenTree"));
    m_repeat->setObjectName(QStringLiteral("unwrittenRepeat"));
    m_repeatAll->setObjectName(QStringLiteral("unwrittenRepeatAll"));
    m_giveUp->setObjectName(QStringLiteral("unwrittenGiveUp"));
    m_tree->setAccessibleName(Text::tr("Не записано"));
    setFocusProxy(m_tree);
    m_tree->setHeaderLabels({Text::tr("Что не записано"), Text::tr("Где (поле: было)"),
                             Text::tr("Почему (поле: набрано)"),
                             Text::tr("Когда (поле: у другого)")});
    m_tree->setFrameShape(QFrame::NoFrame);
    m_tree->setAlternatingRowColors(true);
    m_tree->setItemDelegate(new FieldDelegate(m_tree));
    m_tree->header()->setStretchLastSection(true);
    m_tree->header()->resizeSection(What, 430);
    m_tree->header()->resizeSection(Where, 260);
    m_tree->header()->resizeSection(Why, 360);

    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(m_tree);
    QHBoxLayout* buttons = addPaneRow(*all);
    for (QPushButton* button : {m_repeat, m_giveUp, m_repeatAll})
        buttons->addWidget(button);
    buttons->addStretch();

    connect(m_repeat, &QPushButton::clicked, this, [this] { m_list.repeat(currentId()); });
    connect(m_repeatAll, &QPushButton::clicked, this, [this] { m_list.repeatAll(); });
    connect(m_giveUp, &QPushButton::clicked, this, [this] { m_list.giveUp(currentId()); });
    connect(m_tree, &QTreeWidget::currentItemChanged, this, &UnwrittenPane::updateActions);
    connect(m_tree, &QTreeWidget::itemChanged, this, &UnwrittenPane::textChanged);
    connect(&m_list, &client::UnwrittenList::changed, this, &UnwrittenPane::listChanged);
    connect(m_tree->itemDelegate(), &QAbstractItemDelegate::closeEditor, this, [this] {
        if (m_outdated) // the view is still ending its edit
            QTimer::singleShot(0, this, &UnwrittenPane::listChanged);
    });
    fill();
}

QString UnwrittenPane::currentId() const {
    const QTreeWidgetItem* row = m_tree->currentItem();
    if (row && row->parent())
        row = row->parent();
    return row ? row->data(0, idRole).toString() : QString();
}

void UnwrittenPane::addFields(QTreeWidgetItem* row, const UnwrittenEntry& entry) {
    const store::TableDef* table = store::findTable(entry.request.table);
    const std::vector<client::RecordWrite> records = client::recordsOf(entry.request);
    for (const client::FieldWords& field : entry.words.fields) {
        auto* line = new QTreeWidgetItem(row);
        line->setText(Field, field.name);
        line->setText(Before, field.known ? Text::tr("в хранилище: ") + field.before : QString());
        line->setText(Mine, field.mine);
        line->setData(Field, fieldKeyRole, QString::fromStdString(field.key));
        line->setData(Field, fieldRole, field.field);
        for (const client::Theirs& theirs : entry.theirs)
            if (theirs.field == field.field && theirs.key == field.key)
                line->setText(Others, QStringLiteral("%1 — %2, %3")
                                          .arg(theirs.value, theirs.login, stamp(theirs.time)));
        // What is edited is the whole value: words may be cut short.
        const std::optional<QString> value = table ? textIn(*table, records, field) : std::nullopt;
        if (value) {
            line->setFlags(line->flags() | Qt::ItemIsEditable);
            line->setText(Mine, *value);
        }
        for (int column = 0; column < Count; ++column)
            line->setToolTip(column, plainToolTip(line->text(column)));
    }
}

void UnwrittenPane::listChanged() {
    m_outdated = isCellOpen(*m_tree);
    if (!m_outdated)
        fill();
}

void UnwrittenPane::fill() {
    const QString current = currentId();
    m_filling = true;
    m_tree->clear();
    for (const UnwrittenEntry& entry : m_list.entries()) {
        auto* row = new QTreeWidgetItem(m_tree);
        row->setText(What, entry.words.what);
        row->setText(Where, entry.words.place);
        row->setText(Why, QStringLiteral("%1: %2").arg(stateWord(entry), entry.why));
        row->setText(When, stamp(entry.when));
        row->setData(0, idRole, entry.id);
        row->setForeground(Why, QColor(0xb3, 0x2d, 0x23));
        for (int column = 0; column < Count; ++column)
            row->setToolTip(column, plainToolTip(row->text(column)));
        addFields(row, entry);
        row->setExpanded(entry.state == UnwrittenEntry::Conflict);
        if (entry.id == current || current.isEmpty())
            m_tree->setCurrentItem(row);
    }
    if (!m_tree->currentItem() && m_tree->topLevelItemCount() > 0)
        m_tree->setCurrentItem(m_tree->topLevelItem(0));
    m_filling = false;
    updateActions();
}

void UnwrittenPane::updateActions() {
    const UnwrittenEntry* entry = m_list.find(currentId());
    const bool conflict = entry && entry->state == UnwrittenEntry::Conflict;
    const bool again =
        entry && (entry->state == UnwrittenEntry::Gone || !entry->deletedParentTable.empty());
    m_repeat->setText(conflict ? Text::tr("Взять моё")
                      : again  ? Text::tr("Создать заново")
                               : Text::tr("Повторить", "запись"));
    m_giveUp->setText(conflict ? Text::tr("Взять чужое") : Text::tr("Отказаться"));
    const auto enable = [this](QPushButton* button, bool on) {
        if (!on && button->hasFocus())
            m_tree->setFocus(
                Qt::ShortcutFocusReason); // Qt would give it to whatever is next in the window
        button->setEnabled(on);
    };
    enable(m_repeat, entry && entry->state != UnwrittenEntry::Unknown);
    enable(m_giveUp, entry != nullptr);
    enable(m_repeatAll, !m_list.isEmpty());
}

void UnwrittenPane::textChanged(QTreeWidgetItem* row, int column) {
    if (m_filling || column != Mine || !row->parent())
        return;
    const QString id = row->parent()->data(0, idRole).toString();
    const std::string key = row->data(Field, fieldKeyRole).toString().toStdString();
    const int field = row->data(Field, fieldRole).toInt();
    const QString text = row->text(Mine);
    // The view is still ending its edit; the list's change fills it again.
    QTimer::singleShot(0, this, [=, this] { m_list.setMine(id, key, field, text); });
}

} // namespace orvo::app
