// How the parameters of a menu's element are taken apart.
#include "frame/Launch.h"

#include <QStringList>

namespace orvo {

namespace {

constexpr QChar quote = QLatin1Char('"');

/// The first place of a letter outside of quotes; -1 if there is none.
int findOutside(const QString& text, QChar letter, int from = 0) {
    bool isQuoted = false;
    for (int i = from; i < text.size(); ++i) {
        if (text[i] == quote)
            isQuoted = !isQuoted;
        else if (text[i] == letter && !isQuoted)
            return i;
    }
    return -1;
}

QString unquoted(const QString& text) {
    const QString trimmed = text.trimmed();
    QString result;
    bool isQuoted = false;
    for (int i = 0; i < trimmed.size(); ++i) {
        if (trimmed[i] != quote)
            result += trimmed[i];
        else if (isQuoted && i + 1 < trimmed.size() && trimmed[i + 1] == quote)
            result += trimmed[i++];
        else
            isQuoted = !isQuoted;
    }
    return result;
}

} // namespace

QString LaunchParameters::value(const QString& name) const {
    QString found;
    for (const auto& [one, value] : pairs)
        if (one == name)
            found = value;
    return found;
}

LaunchParameters parseLaunchParameters(const QString& text) {
    LaunchParameters parameters;
    QStringList words;
    for (int from = 0; from <= text.size();) {
        int end = findOutside(text, QLatin1Char(';'), from);
        if (end < 0)
            end = text.size();
        const QString word = text.mid(from, end - from).trimmed();
        from = end + 1;
        const int equals = findOutside(word, QLatin1Char('='));
        const QString name = equals > 0 ? unquoted(word.left(equals)) : QString();
        if (!name.isEmpty())
            parameters.pairs.append({name, unquoted(word.mid(equals + 1))});
        else if (!word.isEmpty())
            words << word;
    }
    parameters.command = words.join(QLatin1Char(';'));
    return parameters;
}

} // namespace orvo
