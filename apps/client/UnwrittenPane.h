// UnwrittenPane.h: the pane "Не записано": what did not reach the store, why, and what to do.
#ifndef ORVO_APPS_CLIENT_UNWRITTENPANE_H
#define ORVO_APPS_CLIENT_UNWRITTENPANE_H

#include "platform/client/UnwrittenList.h"

#include <QWidget>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace orvo::app {

/// One row for each entry, with a row for each field below it: what it was, what was typed, and in
/// a conflict what another wrote. "Набрано" of an entry's text can be changed in place. The actions
/// work on the current entry. While a text is being changed the rows stay as they are, whatever
/// happens to the list.
class UnwrittenPane : public QWidget {
    Q_OBJECT
public:
    enum Column { What, Where, Why, When, Count };
    enum FieldColumn { Field, Before, Mine, Others };

    /// The list outlives the pane.
    explicit UnwrittenPane(client::UnwrittenList& list, QWidget* parent = nullptr);

    QTreeWidget* tree() const { return m_tree; }

private:
    void listChanged();
    void fill();
    void addFields(QTreeWidgetItem* row, const client::UnwrittenEntry& entry);
    void updateActions();
    void textChanged(QTreeWidgetItem* row, int column);
    QString currentId() const;

    client::UnwrittenList& m_list;
    QTreeWidget* m_tree; // these: children of the pane
    QPushButton* m_repeat;
    QPushButton* m_giveUp;
    QPushButton* m_repeatAll;
    bool m_filling = false;
    bool m_outdated = false; ///< to be filled when the open cell is left
};

} // namespace orvo::app

#endif
