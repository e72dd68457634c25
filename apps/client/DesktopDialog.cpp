#include "apps/client/DesktopDialog.h"

#include "apps/client/Look.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"
#include "platform/mdx/MdxBuild.h"

#include <QDialogButtonBox>
#include <QHash>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace orvo::app {

namespace {

struct Row {
    QString key, parent, caption;
    bool isFolder = false;
};

QString textOf(const CMDArray& table, const MDRData* record, const char* field) {
    uint32_t length = 0;
    const char* text = nullptr;
    if (MDRGetTextRef(MDRFldByName(table.array, field), record, &length, &text) != MDX_OK)
        return {};
    return QString::fromStdString(mdx::toUtf8({text, length}));
}

/// Captions from the top down.
QString pathOf(const QHash<QString, Row>& rows, const Row& row) {
    constexpr int deepest = 1000; // more is a circle
    QStringList path{row.caption};
    auto above = rows.constFind(row.parent.toCaseFolded());
    for (int depth = 0; above != rows.constEnd() && depth < deepest; ++depth) {
        path.prepend(above->caption);
        above = rows.constFind(above->parent.toCaseFolded());
    }
    return path.join(QStringLiteral(" / "));
}

} // namespace

DesktopDialog::DesktopDialog(QWidget* parent)
    : QDialog(parent)
    , m_search(new QLineEdit(this))
    , m_list(new QListWidget(this))
    , m_buttons(new QDialogButtonBox(this)) {
    setObjectName(QStringLiteral("desktopDialog"));
    setWindowTitle(Text::tr("Рабочий стол"));
    m_search->setObjectName(QStringLiteral("desktopSearch"));
    m_search->setPlaceholderText(Text::tr("Поиск..."));
    m_search->setAccessibleName(Text::tr("Поиск рабочего стола"));
    m_list->setAccessibleName(Text::tr("Рабочие столы"));
    m_search->setClearButtonEnabled(true);
    m_list->setObjectName(QStringLiteral("desktopList"));
    m_list->setUniformItemSizes(true);
    m_buttons->addButton(Text::tr("Открыть"), QDialogButtonBox::AcceptRole)->setDefault(true);
    m_buttons->addButton(Text::tr("Отмена"), QDialogButtonBox::RejectRole);
    auto* column = new QVBoxLayout(this);
    for (QWidget* one : {static_cast<QWidget*>(m_search), static_cast<QWidget*>(m_list),
                         static_cast<QWidget*>(m_buttons)})
        column->addWidget(one);
    connect(m_search, &QLineEdit::textChanged, this, &DesktopDialog::filter);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &DesktopDialog::take);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &DesktopDialog::take);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(640, 560);
}

bool DesktopDialog::fill(store::Store& store, const QString& current, QString* error) {
    CMDArray table;
    const store::Status status = store.fetch(table::MenuFolder, table.array);
    if (!status.ok()) {
        *error = QString::fromStdString(status.text);
        return false;
    }
    QHash<QString, Row> rows;
    for (uint32_t i = 0; i < mdx::postedCount(table.array); ++i) {
        const MDRData* record = mdx::postedRecord(table.array, i);
        Row row{textOf(table, record, field::KeyLink), textOf(table, record, field::ParentKey),
                oneLine(textOf(table, record, field::caption)), false};
        MDRVar flag{};
        MDRGetVal(MDRFldByName(table.array, field::isFolder), record, &flag);
        row.isFolder = !flag.null && flag.value.boolean;
        rows.insert(row.key.toCaseFolded(), row);
    }
    m_list->clear();
    for (const Row& row : qAsConst(rows)) {
        if (row.isFolder)
            continue;
        auto* item = new QListWidgetItem(pathOf(rows, row), m_list); // owned by the list
        item->setData(Qt::UserRole, row.key);
    }
    m_list->sortItems();
    m_list->setCurrentRow(0);
    for (int i = 0; i < m_list->count(); ++i)
        if (m_list->item(i)->data(Qt::UserRole).toString() == current)
            m_list->setCurrentRow(i);
    m_search->clear();
    m_search->setFocus();
    return true;
}

void DesktopDialog::filter(const QString& text) {
    int first = -1;
    for (int i = m_list->count() - 1; i >= 0; --i) {
        const bool isHit = m_list->item(i)->text().contains(text.trimmed(), Qt::CaseInsensitive);
        m_list->item(i)->setHidden(!isHit);
        if (isHit)
            first = i;
    }
    m_list->setCurrentRow(first);
}

void DesktopDialog::take() {
    const QListWidgetItem* item = m_list->currentItem();
    if (!item)
        return;
    const QString key = item->data(Qt::UserRole).toString();
    accept();
    emit chosen(key);
}

} // namespace orvo::app
