// LaunchParameters.h: the parameters of a menu element.
//
// "name=value" pairs and other words, ";" between them. Blanks around names, values and words do
// not count. What stands in double quotes is taken as it is, ";" and "=" included; "" there is a
// quote.
#ifndef ORVO_APPS_CLIENT_LAUNCHPARAMETERS_H
#define ORVO_APPS_CLIENT_LAUNCHPARAMETERS_H

#include <QList>
#include <QPair>
#include <QString>

namespace orvo::app {

struct LaunchParameters {
    QList<QPair<QString, QString>> pairs; ///< in their order
    QString command; ///< the words that are no pairs, as they were written, ";" between them
};

/// A text of any form has a meaning: a quote without its end reaches to the end of the text.
LaunchParameters parseParameters(const QString& text);

} // namespace orvo::app

#endif
