// Content.h: a stored file as a widget: a Qt Designer form live, a picture as a picture, a PDF page
// by page, anything else as text. Needs a QApplication. Whatever the bytes are, a widget comes of
// it, but building and laying it out may take any time and memory: call it only where that is
// limited.
#ifndef ORVO_APPS_FORMVIEW_CONTENT_H
#define ORVO_APPS_FORMVIEW_CONTENT_H

#include "apps/formview/Channel.h"

#include <QWidget>

#include <memory>

namespace orvo::formview {

struct Content {
    std::unique_ptr<QWidget> widget; ///< never null
    QString notice;                  ///< what is wrong with the file, or was left out; plain text
    bool isDamaged = false;          ///< it is not shown as what it was to be
};

/// Pictures that a form names are looked for in the document's directory, which becomes the current
/// one of the process.
Content makeContent(const Document& document);

} // namespace orvo::formview

#endif
