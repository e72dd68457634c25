#include "platform/client/Attention.h"

#include <QAbstractItemView>
#include <QApplication>

namespace orvo::client {

namespace {

bool hasOpenPicker(const COrvoCliMod& module) {
    for (const CPopTemplate* pop :
         module.findChildren<CPopTemplate*>(QString(), Qt::FindDirectChildrenOnly))
        if (!pop->isHidden() && !pop->property("orvoPalette").toBool())
            return true;
    return false;
}

/// An editor of a view is a child of its viewport; the focus may be in a part of the editor.
bool isCellTypedIn(const COrvoCliMod& module) {
    const QWidget* part = QApplication::focusWidget();
    if (!part || !module.isAncestorOf(part))
        return false;
    for (const QWidget* up = part->parentWidget(); up && up != &module; up = up->parentWidget()) {
        const auto* view = qobject_cast<const QAbstractItemView*>(up->parentWidget());
        if (view && view->viewport() == up)
            return true;
    }
    return false;
}

} // namespace

Attention attentionIn(const COrvoCliMod& module) {
    const CPopMessageBox* box = module.m_popMessageBox;
    if (box && !box->isHidden() && box->isQuestion())
        return Attention::Question;
    if (hasOpenPicker(module))
        return Attention::Picker;
    if (isCellTypedIn(module))
        return Attention::Cell;
    return module.ModEditText().isEmpty() ? Attention::None : Attention::Edit;
}

} // namespace orvo::client
