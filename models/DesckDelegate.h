// DesckDelegate.h: edits the name of a desktop or folder in place.
#ifndef ORVO_MODELS_DESCKDELEGATE_H
#define ORVO_MODELS_DESCKDELEGATE_H

#include "frame/RowDelegate.h"

class DesckTreeModel;

/// A line edit in column 0, which writes the model at each keystroke.
class DesckDelegate : public orvo::RowDelegate {
    Q_OBJECT
public:
    /// The model is not owned and outlives the delegate.
    DesckDelegate(DesckTreeModel* model, QObject* parent);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

signals:
    void dataChanged(); ///< emitted by nothing

private slots:
    void commitEditorData();

private:
    DesckTreeModel* m_model;
};

#endif
