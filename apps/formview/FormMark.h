// FormMark.h: what marks a stored file as a Qt Designer form.
#ifndef ORVO_APPS_FORMVIEW_FORMMARK_H
#define ORVO_APPS_FORMVIEW_FORMMARK_H

#include <QByteArray>
#include <QString>

namespace orvo::formview {

/// A glance at the name and the first bytes; the form may be damaged all the same.
bool looksLikeForm(const QByteArray& bytes, const QString& name);

} // namespace orvo::formview

#endif
