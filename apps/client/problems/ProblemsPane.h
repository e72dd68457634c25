// ProblemsPane.h: the pane "Проблемы": what is wrong, where, and what puts it right.
#ifndef ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSPANE_H
#define ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSPANE_H

#include "apps/client/problems/ProblemsFeed.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeView;

namespace orvo::app {

class ProblemsPane : public QWidget {
    Q_OBJECT
public:
    /// The feed outlives it. `mayWrite` false: nothing can be put right.
    ProblemsPane(ProblemsFeed& feed, bool mayWrite, QWidget* parent = nullptr);

    void setMayWrite(bool may);
    QTreeView* view() const { return m_view; }
    ProblemsFeed& feed() { return m_feed; }

signals:
    void showRequested(const QString& table, const QString& key, const QString& desktop);
    /// Where that record is used is wanted.
    void usesRequested(const QString& table, const QString& key);

private:
    void makeView();
    void makeButtons();
    void updateActions();
    void note();
    void showCurrent();
    void cureSelected();
    void showContextMenu(const QPoint& point);
    const ProblemRow* rowAt(const QModelIndex& index) const;
    template <class Take>
    void forEachChosen(const Take& take) const;
    bool isAnyCurable() const;
    void remember();
    void restore();

    ProblemsFeed& m_feed;
    bool m_mayWrite;
    checks::Finding m_current; ///< of the row with the focus, over a reset
    QComboBox* m_which;        // these: children of the pane
    QLineEdit* m_text;
    QTreeView* m_view;
    QPushButton* m_show;
    QPushButton* m_cure;
    QPushButton* m_stop; ///< seen while something is being cured
    QLabel* m_note;
};

} // namespace orvo::app

#endif
