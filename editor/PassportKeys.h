// PassportKeys.h: a passport by keys, and its "..." by one click.
//
// Up, Down and Tab go from value to value and open its field; F2, Enter and typing open the field
// of the current row, Enter takes what was typed and closes it, Alt+Down is its "...". A check box
// changes by a click or the blank and by no other key: its editor turns the value over as it opens,
// so that going past it would change the record. Tab behind the last row and before the first
// leaves the passport. Rows that are made anew while it has the focus, as after a save, leave the
// row of that name current.
#ifndef ORVO_EDITOR_PASSPORTKEYS_H
#define ORVO_EDITOR_PASSPORTKEYS_H

#include <QModelIndex>
#include <QObject>

class QKeyEvent;
class QTreeView;

namespace orvo::editor {

class PassportKeys : public QObject {
public:
    /// The view shows a PropModel, has its delegate already, and owns this.
    explicit PassportKeys(QTreeView* passport);

    /// Opens the field of the current row; of a check box, which has none, nothing.
    void editValue();
    /// Takes what stands in the field that has the focus and closes it; the passport has the focus
    /// then. Nothing without one.
    void closeField();
    /// editValue() of the row of that name, which becomes the current one.
    void editRow(const QString& rowName);
    /// What the "..." of the current row does.
    void chooseValue();
    void toggleValue();
    bool mayEdit() const;
    bool mayChoose() const { return isOfType(currentValue(), 3) && mayWrite(); }
    bool mayToggle() const { return isOfType(currentValue(), 2) && mayWrite(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The field that has the focus is asked here before the delegate, which would go to the next
    /// row and open it, and so turn a check box over.
    void getKeysFirst();
    /// Before rows go, and when others have come.
    void rememberRow();
    void returnToRow();
    bool hasFocus() const;      ///< the passport, or a field of it
    QWidget* openField() const; ///< that has the focus; null: none
    bool viewKey(QKeyEvent& event);
    bool editorKey(QKeyEvent& event);
    void moveCurrent(QKeyEvent& event);
    /// Makes the next row whose value can be changed current. False if there is none.
    bool step(int by);
    void goTo(const QModelIndex& value, bool opens);
    bool mayWrite() const;
    QModelIndex currentValue() const;
    QModelIndex nextValue(const QModelIndex& from, int by) const;
    static bool isOfType(const QModelIndex& value, int type);

    QTreeView* const m_view;
    const QObject* const m_viewport; ///< the view's; outlives the view's own part while both go
    QString m_row;                   ///< name of the row that was current, to be so again; or empty
    QPersistentModelIndex m_pressed; ///< the value whose "..." the mouse went down on
};

} // namespace orvo::editor

#endif
