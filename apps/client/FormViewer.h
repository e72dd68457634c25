// FormViewer.h: shows a stored form.
#ifndef ORVO_APPS_CLIENT_FORMVIEWER_H
#define ORVO_APPS_CLIENT_FORMVIEWER_H

#include "apps/client/FormProcess.h"
#include "apps/client/Installation.h"
#include "platform/store/Store.h"

#include <QPair>
#include <QString>
#include <QTemporaryDir>
#include <QVector>
#include <QWidget>

class QTabWidget;

namespace orvo::app {

/// The stored files of one form, each in a tab of its own: Qt Designer forms live, pictures as
/// pictures, the rest as text. Each tab that has been looked at has a process of its own
/// (FormView.h), so that nothing in a file can hold up or end the client or another tab. Forms come
/// first: they are what the user came for.
class FormWindow : public QWidget {
    Q_OBJECT
public:
    struct Look {
        QVector<QPair<QString, QString>> parameters; ///< of the forms
        bool isFitted = false; ///< pictures and forms without a layout are scaled to the view
        /// What lies beside a form, notes and pictures of it, has no tab; without a form all have.
        bool isFormOnly = false;
    };

    /// `program` shows a file.
    FormWindow(const QString& program, const QString& name,
               const std::vector<store::StoredFile>& files, const Look& look,
               const ProcessLimits& limits, QWidget* parent);

    const QTabWidget* tabs() const { return m_tabs; }

signals:
    /// A file is damaged or cannot be shown; one line.
    void problem(const QString& text);

private:
    void fit(QWidget* view);

    QTemporaryDir m_beside; ///< the files, for forms that name pictures
    QTabWidget* m_tabs;     ///< child
    bool m_isFitted = false;
};

/// Makes a window of the stored files of the form that `request` names: the form's name, or the
/// name, ";" and parameters (frame/Launch.h); a name may hold ";" itself, so the longest one
/// that exists is meant. It belongs to `parent`, and is the caller's to show. Null, with one line
/// in `error`, if there is no such form or it has no files.
FormWindow* openForm(store::Store& store, const QString& request, QWidget* parent, QString* error,
                     const QString& program = installation::formViewProgram(),
                     const ProcessLimits& limits = {});

} // namespace orvo::app

#endif
