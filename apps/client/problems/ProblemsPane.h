// ProblemsPane.h: the pane "Проблемы": what is wrong, where, and what puts it right.
#ifndef ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSPANE_H
#define ORVO_APPS_CLIENT_PROBLEMS_PROBLEMSPANE_H

#include "apps/client/problems/ProblemsFeed.h"

#include <QWidget>

#include <vector>

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
    void showUses();
    const ProblemRow* rowAt(const QModelIndex& index) const;
    template <class Take>
    void forEachChosen(const Take& take) const;
    bool isAnyCurable() const;
    void remember();
    void restore();
    void aboutToRemove(const QModelIndex& parent, int first, int last);
    void removed();
    void continueCures();
    bool isCured(const checks::Finding& finding) const;

    ProblemsFeed& m_feed;
    bool m_mayWrite;
    checks::Finding m_current;            ///< of the row with the focus, over a reset
    checks::Finding m_next;               ///< of the row that gets it when that one is gone
    bool m_isSelected = false;            ///< it was
    std::vector<checks::Finding> m_cured; ///< what «Исправить» was asked for last
    int m_place = -1;      ///< of a row with the focus that is being removed; -1: of none
    bool m_goesOn = false; ///< what was put right here is gone: the next one is to be selected
    QComboBox* m_which;    // these: children of the pane
    QLineEdit* m_text;
    QTreeView* m_view;
    QPushButton* m_show;
    QPushButton* m_cure;
    QPushButton* m_stop; ///< seen while something is being cured
    QLabel* m_note;
};

} // namespace orvo::app

#endif
