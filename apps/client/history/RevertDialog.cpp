#include "apps/client/history/RevertDialog.h"

#include "apps/client/Look.h"
#include "frame/Text.h"
#include "history/RecordWords.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace orvo::app {

namespace {

enum RevertColumn { What, Before, After };

QLabel* plainLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setText(clipped(text));
    return label;
}

QString othersWords(const RevertPlan& plan) {
    if (!plan.asksToMove)
        return Text::tr("Удалить и это, вместе с тем, что построили другие");
    return plan.asksToDelete
               ? Text::tr("Удалить или перенести назад и это, вместе с тем, что сделали другие")
               : Text::tr("Перенести назад и это, вместе с тем, что изменили другие");
}

QTreeWidgetItem* addLine(QTreeWidgetItem* parent, const QStringList& texts) {
    auto* line = new QTreeWidgetItem(parent);
    for (int column = 0; column < texts.size(); ++column) {
        line->setText(column, oneLine(texts[column]));
        line->setToolTip(column, plainToolTip(clipped(texts[column])));
    }
    return line;
}

} // namespace

RevertDialog::RevertDialog(const QString& title, const QString& note, QWidget* parent)
    : QDialog(parent)
    , m_head(plainLabel(Text::tr("Готовится…"), this))
    , m_writes(new QTreeWidget(this))
    , m_leftHead(plainLabel(Text::tr("Останется как есть:"), this))
    , m_left(new QListWidget(this))
    , m_questions(new QVBoxLayout)
    , m_otherNames(new QCheckBox(
          Text::tr("Вернуть под свободным именем то, чьё имя уже занято: «Имя (2)»"), this))
    , m_others(new QCheckBox(this)) {
    setObjectName(QStringLiteral("revertDialog"));
    setWindowTitle(Text::tr("Вернуть"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_head->setObjectName(QStringLiteral("revertHead"));
    m_writes->setObjectName(QStringLiteral("revertWrites"));
    m_left->setObjectName(QStringLiteral("revertLeft"));
    m_otherNames->setObjectName(QStringLiteral("revertOtherNames"));
    m_others->setObjectName(QStringLiteral("revertOthers"));
    m_writes->setHeaderLabels({Text::tr("Что"), Text::tr("Сейчас"), Text::tr("Станет")});
    m_writes->setAccessibleName(Text::tr("Что изменится"));
    m_left->setAccessibleName(Text::tr("Останется как есть"));
    m_writes->setAlternatingRowColors(true);
    m_writes->header()->setStretchLastSection(false);
    m_writes->header()->setSectionResizeMode(What, QHeaderView::Stretch);
    m_writes->header()->resizeSection(Before, 270);
    m_writes->header()->resizeSection(After, 270);
    m_left->setWordWrap(true);
    m_left->setMaximumHeight(130);
    m_leftHead->hide();
    m_left->hide();
    m_otherNames->hide();
    m_others->hide();

    auto* buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(Text::tr("Вернуть"), QDialogButtonBox::AcceptRole);
    QPushButton* cancel =
        buttons->addButton(Text::tr("Ничего не делать"), QDialogButtonBox::RejectRole);
    m_ok->setObjectName(QStringLiteral("revertOk"));
    cancel->setObjectName(QStringLiteral("revertCancel"));
    m_ok->setEnabled(false);
    auto* all = new QVBoxLayout(this);
    all->addWidget(plainLabel(title, this));
    if (!note.isEmpty()) {
        QLabel* label = plainLabel(note, this);
        label->setObjectName(QStringLiteral("revertNote"));
        QFont bold = label->font();
        bold.setBold(true);
        label->setFont(bold);
        all->addWidget(label);
    }
    all->addWidget(m_head);
    all->addWidget(m_writes, 1);
    all->addWidget(m_leftHead);
    all->addWidget(m_left);
    all->addLayout(m_questions);
    all->addWidget(m_otherNames);
    all->addWidget(m_others);
    all->addWidget(buttons);
    resize(960, 480);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_otherNames, &QCheckBox::toggled, this, &RevertDialog::changed);
    connect(m_others, &QCheckBox::toggled, this, &RevertDialog::changed);
}

void RevertDialog::changed() {
    m_ok->setEnabled(false); // until the plan fits the choices
    emit choicesChanged();
}

void RevertDialog::addPlace(const RevertPlan::Place& place) {
    if (m_places.count(place.missing) != 0)
        return;
    auto* box = new QComboBox(this);
    box->setObjectName(QStringLiteral("revertPlace%1").arg(m_places.size()));
    box->setAccessibleName(Text::tr("Куда вернуть"));
    box->setMaxVisibleItems(20);
    box->addItem(Text::tr("не возвращать"));
    if (place.top)
        box->addItem(Text::tr("на верхний уровень"), QByteArray());
    for (const auto& [caption, key] : place.others)
        box->addItem(oneLine(caption), QByteArray::fromStdString(key));
    m_places[place.missing] = box;
    m_questions->addWidget(plainLabel(place.what + Text::tr(". Куда вернуть?"), this));
    m_questions->addWidget(box);
    connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this, &RevertDialog::changed);
}

void RevertDialog::showWrites(const RevertPlan& plan) {
    m_writes->clear();
    for (const RevertPlan::Write& write : plan.writes) {
        const QString place =
            write.place.isEmpty() ? QString() : QStringLiteral("  (%1)").arg(write.place);
        QTreeWidgetItem* row = addLine(m_writes->invisibleRootItem(), {write.words.what + place});
        row->setFirstColumnSpanned(true);
        for (const history::FieldWords& field : write.words.fields)
            addLine(row, {field.name, field.before, field.after});
    }
    if (plan.inverse.count > plan.writes.size())
        addLine(m_writes->invisibleRootItem(),
                {Text::tr("… и ещё %1").arg(plan.inverse.count - plan.writes.size())});
    if (m_writes->topLevelItemCount() == 1)
        m_writes->expandAll();
}

void RevertDialog::setPlan(const RevertPlan& plan) {
    const size_t count = plan.inverse.count;
    m_head->setText(count == 0
                        ? Text::tr("Записывать нечего.")
                        : Text::tr("Будет записано одним действием: %1 %2.")
                              .arg(count)
                              .arg(history::numeralForm(count, Text::tr("запись"),
                                                        Text::tr("записи"), Text::tr("записей"))));
    showWrites(plan);
    for (const RevertPlan::Place& place : plan.places)
        addPlace(place);
    if (plan.namesTaken)
        m_otherNames->show();
    if (!plan.builtOn.isEmpty()) {
        m_others->setText(othersWords(plan));
        m_others->show();
    }
    QStringList left = plan.left;
    left << plan.builtOn;
    for (const RevertPlan::Place& place : plan.places)
        left << place.what;
    m_left->clear();
    for (const QString& line : left)
        m_left->addItem(clipped(line));
    m_leftHead->setVisible(!left.isEmpty());
    m_left->setVisible(!left.isEmpty());
    m_ok->setEnabled(count > 0);
}

history::Choices RevertDialog::choices() const {
    history::Choices choices;
    choices.partly = true; // it says what is left
    choices.othersWorkToo = m_others->isChecked();
    choices.otherNames = m_otherNames->isChecked();
    for (const auto& [missing, box] : m_places)
        if (const QVariant key = box->currentData(); key.isValid())
            choices.places[missing] = key.toByteArray().toStdString();
    return choices;
}

} // namespace orvo::app
