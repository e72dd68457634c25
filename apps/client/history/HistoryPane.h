// HistoryPane.h: the pane "История": who changed what and when, filters, and what takes it back.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYPANE_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYPANE_H

#include "apps/client/history/HistoryFeed.h"
#include "apps/client/history/Reverter.h"

#include <QWidget>

class QLabel;
class QMenu;
class QPushButton;
class QTreeView;

namespace orvo::app {

class HistoryFilters;

class HistoryPane : public QWidget {
    Q_OBJECT
public:
    /// The thread outlives it. `mayWrite` false: what takes back is switched off.
    HistoryPane(StoreThread& thread, const QString& login, bool mayWrite,
                QWidget* parent = nullptr);

    void setMayWrite(bool may);

    HistoryFeed& feed() { return m_feed; }
    QTreeView* view() const { return m_view; }
    /// Shows the history of that record, or of it and everything in it.
    void showRecord(const QString& table, const QString& key, bool withContent);
    /// Shows what that user did.
    void showUser(const QString& login);
    void clearFilters();

signals:
    /// Where that record is used is wanted; of a person by his login.
    void usesRequested(const QString& table, const QString& key, const QString& login);
    void showRequested(const QString& table, const QString& key, const QString& desktop);
    void revertRequested(const orvo::app::Reverter::Request& request);
    void failed(const QString& text);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void keepPlace();
    void makeActions();
    void applyFilters();
    void narrowTo(const HistoryRecord& record, bool withContent);
    void updateActions();
    void readOnAtEnd();
    void fillBackMenu(QMenu& menu);
    void showContextMenu(const QPoint& point);
    void showUses();
    void showCurrent();
    void revertCurrent();
    void revertBackTo(const history::Filter& scope, const QString& whose);
    const HistoryAction* current() const;

    StoreThread& m_thread;
    bool m_mayWrite;
    HistoryFeed m_feed;
    HistoryFilters* m_filters; // these: children of the pane
    QTreeView* m_view;
    QLabel* m_note;
    QPushButton* m_show;
    QPushButton* m_revert;
    QPushButton* m_revertBack;
    QMenu* m_backMenu;
};

} // namespace orvo::app

#endif
