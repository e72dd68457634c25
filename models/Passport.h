// Passport.h: filling the property grid of the current row.
#ifndef ORVO_MODELS_PASSPORT_H
#define ORVO_MODELS_PASSPORT_H

#include "models/PropModel.h"

#include <QString>
#include <QVariant>

#include <vector>

namespace orvo {

/// One editor row of a passport.
struct PassportRow {
    QString name; ///< by it the row is found again; differs from all others of the grid
    QString caption;
    MyEditorType editor;
    bool readOnly;
    QVariant value;
};

/// Adds a category behind what the grid shows, with these rows and their values below it, and gives
/// its index.
QModelIndex addPassportCategory(PropModel& model, const QString& name, const QString& caption,
                                const std::vector<PassportRow>& rows);

/// Changes the value of a row as the user's own edit does: the model reports it. Nothing happens if
/// the grid has no such row.
void editPassportValue(PropModel& model, const QString& rowName, const QVariant& value);

} // namespace orvo

#endif
