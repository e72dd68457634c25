// The client in English: every word that its windows hold, but for names of records.
#include "apps/language/Language.h"
#include "platform/store/StoreUrl.h"
#include "tests/client/RunningClient.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QRegularExpression>
#include <QTabBar>
#include <QTabWidget>

using namespace orvo;
using namespace orvo::test;

class TestEnglish : public QObject {
    Q_OBJECT
    std::optional<language::Speaker> m_speaker;
    std::unique_ptr<RunningClient> m_running;
    int m_looked = 0;

    void look(const QObject& at, const QString& text) {
        static const QRegularExpression letters(QStringLiteral("[А-Яа-яЁё«»]"));
        ++m_looked;
        QString left = text;
        // Data: the names of the fixture's records and people.
        for (const char* name : {"модули", "функции", "формы отображения", "КС-1", "Петров П.", "а",
                                 "б", "в", "г", "Петров"})
            left.remove(
                QRegularExpression(QStringLiteral("(?<![А-Яа-яЁё])%1(?![А-Яа-яЁё])")
                                       .arg(QRegularExpression::escape(QString::fromUtf8(name)))));
        QVERIFY2(!left.contains(letters),
                 qPrintable(
                     QStringLiteral("%1 %2: %3")
                         .arg(QLatin1String(at.metaObject()->className()), at.objectName(), text)));
    }

    void lookAtItems(const QAbstractItemView& view) {
        const QAbstractItemModel* model = view.model();
        if (!model)
            return;
        for (int column = 0; column < model->columnCount(); ++column)
            for (const Qt::ItemDataRole role : {Qt::DisplayRole, Qt::ToolTipRole})
                look(view, model->headerData(column, Qt::Horizontal, role).toString());
        lookBelow(view, *model, {});
    }
    void lookBelow(const QAbstractItemView& view, const QAbstractItemModel& model,
                   const QModelIndex& parent) {
        for (int row = 0; row < model.rowCount(parent); ++row)
            for (int column = 0; column < model.columnCount(parent); ++column) {
                const QModelIndex index = model.index(row, column, parent);
                for (const Qt::ItemDataRole role :
                     {Qt::DisplayRole, Qt::ToolTipRole, Qt::AccessibleTextRole})
                    look(view, index.data(role).toString());
                if (column == 0)
                    lookBelow(view, model, index);
            }
    }
    void lookAtAll() {
        for (const QWidget* widget : QApplication::allWidgets()) {
            for (const QString& text :
                 {widget->windowTitle(), widget->toolTip(), widget->statusTip(),
                  widget->accessibleName(), widget->accessibleDescription()})
                look(*widget, text);
            for (const char* property :
                 {"text", "placeholderText", "title", "suffix", "displayText"})
                if (!qobject_cast<const QLineEdit*>(widget) ||
                    property == QLatin1String("placeholderText"))
                    look(*widget, widget->property(property).toString());
            for (const QAction* action : widget->actions())
                for (const QString& text : {action->text(), action->toolTip(), action->iconText()})
                    look(*action, text);
            if (const auto* tabs = qobject_cast<const QTabBar*>(widget))
                for (int i = 0; i < tabs->count(); ++i)
                    look(*tabs, tabs->tabText(i) + tabs->tabToolTip(i));
            if (const auto* box = qobject_cast<const QComboBox*>(widget))
                for (int i = 0; i < box->count(); ++i)
                    look(*box, box->itemText(i));
            if (const auto* view = qobject_cast<const QAbstractItemView*>(widget))
                lookAtItems(*view);
        }
    }

private slots:
    void init() {
        m_speaker.emplace(QStringLiteral("en"));
        m_running = std::make_unique<RunningClient>();
    }
    void cleanup() {
        m_running.reset();
        m_speaker.reset();
    }

    void noRussianIsLeftInAnyWindow() {
        const auto window = m_running->client->window();
        // Something for each pane: an edit for the history, a dead link for the problems.
        m_running->otherWrites(MDX_UPDATE, {{"KeyLink", "a"}, {"ico", "gone.png"}});
        m_running->otherWrites(MDX_DELETE, {{"KeyLink", "d"}});
        m_running->otherWrites(MDX_INSERT, {{"KeyLink", "r1"}, {"name_", "Pump"}, {"type_", "1"}},
                               "MenuResource");
        for (QDockWidget* dock : window->findChildren<QDockWidget*>())
            dock->show();
        const auto rows = [&](const char* view) {
            auto* found = window->findChild<QAbstractItemView*>(QLatin1String(view));
            return found && found->model() ? found->model()->rowCount() : -1;
        };
        QTRY_VERIFY(rows("historyTree") > 0);
        QTRY_VERIFY(rows("problemsTree") > 0);
        lookAtAll();
        QVERIFY2(m_looked > 2000, qPrintable(QString::number(m_looked)));
    }

    void theStoreAnswersInEnglishToo() {
        store::StoreUrl url;
        const store::Status status = url.parse("nowhere://at.all");
        QVERIFY(!status.ok());
        look(*this, QString::fromStdString(status.text));
    }
};

QTEST_MAIN(TestEnglish)
#include "tst_english.moc"
