// PlaceDelegate.h: cells with the path of a record. Where there is too little room the beginning is
// cut off: places of one branch begin alike and differ at their ends.
#ifndef ORVO_APPS_CLIENT_PLACEDELEGATE_H
#define ORVO_APPS_CLIENT_PLACEDELEGATE_H

#include "apps/client/Look.h"

namespace orvo::app {

class PlaceDelegate : public ReadableDelegate {
public:
    using ReadableDelegate::ReadableDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        ReadableDelegate::initStyleOption(option, index);
        option->textElideMode = Qt::ElideLeft;
    }
};

} // namespace orvo::app

#endif
