// FormFilter.h: makes a Qt Designer form that somebody stored safe to build.
//
// QUiLoader trusts its input: it recurses as deep as the form is nested, allocates as many rows as
// a form asks for, and opens any file that a form names. The filter reads a form twice as a stream
// (first to count, then to copy) and hands on only what is known and small enough, so that the
// loader never sees the original.
//
//   Refused as a whole: what is no form or is damaged; more than the limits below; a document type
//   with entities.
//   Left out, with a note: files that are not stored beside the form or are no pictures of a
//   bearable size, addresses, scripts, numbers beyond reason, slots that destroy widgets.
//   Replaced: a class that is not Qt's own by the nearest one of Qt that it extends, else by
//   QWidget; rich text that refers to other files by its source; the end of a long text by "…".
//
// What still is too much for the loader or for Qt is the business of the process's limits.
#ifndef ORVO_APPS_FORMVIEW_FORMFILTER_H
#define ORVO_APPS_FORMVIEW_FORMFILTER_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

namespace orvo::formview {

struct FormLimits {
    int bytes = 4 << 20;
    int xmlDepth = 200;
    int elements = 200000;
    int widgets = 5000;
    int widgetDepth = 40;
    int items = 20000; ///< of lists, trees, tables and layouts
    int lines = 1000;  ///< rows and columns of a table or a grid, each
    int connections = 500;
    int attribute = 1024; ///< characters
    int text = 1 << 16;   ///< characters of one text; longer ones are cut
    int texts = 1 << 20;  ///< characters of all texts together
};

struct FilteredForm {
    QByteArray form;   ///< for QUiLoader; null if refused
    QString refusal;   ///< Russian, why; empty if not refused
    QStringList notes; ///< Russian, what was left out; few, even if there was much
};

/// `isPicture` tells whether a picture of that name is stored beside the form and may be shown.
FilteredForm filterForm(const QByteArray& bytes,
                        const std::function<bool(const QString& name)>& isPicture,
                        const FormLimits& limits = {});

} // namespace orvo::formview

#endif
