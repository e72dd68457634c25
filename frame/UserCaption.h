// UserCaption.h: how a user is shown. Needs Qt's core only.
#ifndef ORVO_FRAME_USERCAPTION_H
#define ORVO_FRAME_USERCAPTION_H

#include <QString>

/// Family name and initials; the login for programs and for users without a family name.
inline QString userCaption(const QString& login, const QString& lastName, const QString& firstName,
                           const QString& midlName, bool program) {
    if (lastName.isEmpty() || program)
        return login;
    if (firstName.isEmpty())
        return lastName;
    QString caption = lastName + QLatin1Char(' ') + firstName.at(0) + QLatin1Char('.');
    if (!midlName.isEmpty())
        caption += QString(midlName.at(0)) + QLatin1Char('.');
    return caption;
}

#endif
