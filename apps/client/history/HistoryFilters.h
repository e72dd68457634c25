// HistoryFilters.h: the row of the pane "История" that says which actions it shows: of whom, since
// when, with which text, and of which record.
#ifndef ORVO_APPS_CLIENT_HISTORY_HISTORYFILTERS_H
#define ORVO_APPS_CLIENT_HISTORY_HISTORYFILTERS_H

#include "apps/client/StoreThread.h"
#include "apps/client/history/HistoryAction.h"
#include "history/Inverse.h"
#include "history/Reading.h"

#include <QTimer>
#include <QWidget>

class QComboBox;
class QDateTimeEdit;
class QLineEdit;
class QToolButton;

namespace orvo::app {

class HistoryFilters : public QWidget {
    Q_OBJECT
public:
    /// The thread outlives it.
    HistoryFilters(StoreThread& thread, const QString& login, QWidget* parent);

    /// What is chosen now.
    history::Filter filter() const;

    /// Everything of everybody.
    void clear();
    /// Only of that record, or of it and everything in it; an empty key: of all.
    void setScope(const HistoryRecord& record, bool withContent);
    /// Only of that login, also of one that is not listed; empty: by hand.
    void chooseUser(const QString& login, const QString& name);
    /// The users to choose from, by login. What is chosen stays.
    void setNames(const history::PersonNames& names);

signals:
    /// filter() is another one.
    void changed();

private:
    void choosePeriod();
    void apply();
    void nameScope();

    StoreThread& m_thread;
    const QString m_login;
    HistoryRecord m_record; ///< of the scope
    bool m_withContent = false;
    QTimer m_applySoon;
    QComboBox* m_who; // these: children of the row
    QComboBox* m_since;
    QDateTimeEdit* m_from; ///< shown if a moment of one's own is wanted
    QLineEdit* m_text;
    QToolButton* m_scopeButton; ///< names the scope; a click lifts it
};

} // namespace orvo::app

#endif
