// Language.h: the language of a program of ours.
#ifndef ORVO_APPS_LANGUAGE_LANGUAGE_H
#define ORVO_APPS_LANGUAGE_LANGUAGE_H

#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTranslator>

#include <memory>

namespace orvo::language {

/// The codes of the languages there are, as `--lang` takes them: "ru", the language of the sources,
/// first.
const QStringList& codes();

/// What the last `--lang` says in the arguments of a program, "--lang en" or "--lang=en", empty if
/// nothing: for what is said before a command line is read, and about it. It may be none of
/// codes().
QString given(const QStringList& arguments);

/// `wanted` if it is one of codes(); else $ORVO_LANG, by which a program tells those that it
/// starts; else what goes with the user's locale.
QString choose(const QString& wanted);

/// The language that goes with a locale: Russian with a Russian one and with that of C, which
/// names none, English with any other.
QString codeOf(const QLocale& locale);

/// Texts, Qt's own included, dates and numbers are in a language while this lives.
///
/// 1. A QCoreApplication exists as long as this does, and only one Speaker at a time.
/// 2. $ORVO_LANG names the language, so that programs started from here speak it too.
///
/// Windows that exist already keep their texts. The GUI thread's; texts may be asked for from any.
class Speaker {
public:
    explicit Speaker(const QString& code); ///< one of codes()
    ~Speaker();
    Speaker(const Speaker&) = delete;
    Speaker& operator=(const Speaker&) = delete;

private:
    /// What a class has no text of its own for is one of the common ones.
    class Own : public QTranslator {
    public:
        QString translate(const char* context, const char* text, const char* which,
                          int n) const override;
    };
    Own m_own;
    QTranslator m_qt;
};

} // namespace orvo::language

#endif
