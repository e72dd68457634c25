// PasspDelegate.h: makes the cells of the property grid work.
#ifndef ORVO_MODELS_PASSPDELEGATE_H
#define ORVO_MODELS_PASSPDELEGATE_H

#include "frame/RowDelegate.h"

class PropModel;

/// Chooses the editor of a row by its MyEditorType, moves values between editor and model, and
/// paints check boxes and "..." buttons into the cells, so that they show while no editor is open.
/// Only column 1 of an editor row ever has an editor.
class PasspDelegate : public orvo::RowDelegate {
    Q_OBJECT
public:
    /// The model is not owned and outlives the delegate. `parent`: Unused; the published interface
    /// has this parameter.
    PasspDelegate(PropModel* model, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    /// Says where the rows of which this is the passport differ, and how many they are.
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    /// Opening the editor of a check row turns its value over, once each time.
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

    /// A cell's background and selection without its text.
    void drawStyleSheet(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const;

signals:
    void buttonPressed(const QString& rowName);
    void returnPressed(const QString& rowName); ///< Return in a button editor with a value
    void dataChanged();                         ///< Unused; the published interface has this signal

private slots:
    void commitEditorData();
    void OnPressButton(const QModelIndex& index);
    void OnSignClearText(const QModelIndex& index);

private:
    bool isValueCell(const QModelIndex& index) const;
    void paintCheck(QPainter* painter, const QStyleOptionViewItem& option,
                    const QModelIndex& index) const;
    void paintButton(QPainter* painter, const QStyleOptionViewItem& option,
                     const QModelIndex& index) const;

    PropModel* m_model;
};

#endif
