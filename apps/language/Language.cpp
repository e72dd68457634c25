#include "apps/language/Language.h"

#include "frame/StdText.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>

#include <cstring>

/// Resources of a static library are there once they have been asked for, outside of any namespace.
static void initTexts() {
    Q_INIT_RESOURCE(language);
}

namespace orvo::language {

namespace {

const char variable[] = "ORVO_LANG";
const char common[] = "orvo"; ///< the context of Text and StdText

std::string translated(const char* text) {
    return QCoreApplication::translate(common, text).toStdString();
}

bool isRussian(const QString& code) {
    return code == codes().first();
}

/// The user's own where it is of that language: it knows his country's dates and numbers.
QLocale localeOf(const QString& code) {
    const QLocale wanted(code);
    return QLocale::system().language() == wanted.language() ? QLocale::system() : wanted;
}

} // namespace

const QStringList& codes() {
    static const QStringList all{QStringLiteral("ru"), QStringLiteral("en")};
    return all;
}

QString given(const QStringList& arguments) {
    const QString option = QStringLiteral("--lang");
    QString last;
    for (int i = 1; i < arguments.size() && arguments[i] != QLatin1String("--"); ++i) {
        if (arguments[i] == option)
            last = arguments.value(++i);
        else if (arguments[i].startsWith(option + QLatin1Char('=')))
            last = arguments[i].mid(option.size() + 1);
    }
    return last;
}

QString choose(const QString& wanted) {
    for (const QString& code : {wanted, qEnvironmentVariable(variable)})
        if (codes().contains(code))
            return code;
    return codeOf(QLocale(QLocale::system().uiLanguages().value(0)));
}

QString codeOf(const QLocale& locale) {
    return locale.language() == QLocale::C || locale.language() == QLocale::Russian
               ? codes().first()
               : QStringLiteral("en");
}

Speaker::Speaker(const QString& code) {
    Q_ASSERT(QCoreApplication::instance() && codes().contains(code) && !StdText::translator);
    initTexts();
    qputenv(variable, code.toLatin1());
    QLocale::setDefault(localeOf(code));
    // File dialogs and standard menus speak as the modules do. Qt's own texts are English.
    if (isRussian(code) && m_qt.load(QLocale(code), QStringLiteral("qtbase"), QStringLiteral("_"),
                                     QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_qt);
    if (!isRussian(code) && m_own.load(QStringLiteral(":/orvo/language/orvo_%1.qm").arg(code))) {
        QCoreApplication::installTranslator(&m_own);
        StdText::translator = translated;
    }
}

QString Speaker::Own::translate(const char* context, const char* text, const char* which,
                                int n) const {
    const QString found = QTranslator::translate(context, text, which, n);
    return found.isNull() && std::strcmp(context, common) != 0
               ? QTranslator::translate(common, text, which, n)
               : found;
}

Speaker::~Speaker() {
    StdText::translator = nullptr;
    QCoreApplication::removeTranslator(&m_own);
    QCoreApplication::removeTranslator(&m_qt);
}

} // namespace orvo::language
