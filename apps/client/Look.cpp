#include "apps/client/Look.h"

#include "apps/client/FocusMark.h"
#include "apps/client/LatinKeys.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPalette>
#include <QStyleFactory>
#include <QTranslator>

namespace orvo::app {

namespace {

QPalette calmPalette() {
    const QColor window(0xf4, 0xf6, 0xf8);
    const QColor text(0x1f, 0x29, 0x33);
    const QColor faint(0x8a, 0x94, 0x9e);
    QPalette palette(QColor(0xee, 0xf1, 0xf4), window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xf7, 0xf9, 0xfb));
    // One colour with and without the focus: the branches of a styled tree know only the first, and
    // a row of two colours looks broken.
    palette.setColor(QPalette::Highlight, QColor(0xcb, 0xdf, 0xf4));
    palette.setColor(QPalette::HighlightedText, text);
    palette.setColor(QPalette::Mid, QColor(0xc3, 0xca, 0xd2));
    palette.setColor(QPalette::ToolTipBase, QColor(0x2b, 0x34, 0x3e));
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, faint);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

} // namespace

QString clipped(const QString& text, int longest) {
    return text.size() > longest ? text.left(longest) + QChar(0x2026) : text;
}

QString plainToolTip(const QString& text, const QString& hint) {
    QString tip;
    if (!text.isEmpty())
        tip = QStringLiteral("<p style='white-space:pre-wrap'>%1</p>")
                  .arg(clipped(text).toHtmlEscaped());
    if (!hint.isEmpty())
        tip += QStringLiteral("<p>%1</p>").arg(hint.toHtmlEscaped());
    return tip;
}

QString oneLine(QString text, int longest) {
    text = clipped(text, longest);
    for (QChar& letter : text)
        if (!letter.isPrint())
            letter = QLatin1Char(' ');
    return text;
}

void applyTheme() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(calmPalette());
    // File dialogs and standard menus speak Russian as the modules do.
    auto* translator = new QTranslator(qApp); // owned by the application
    if (translator->load(QLocale(QLocale::Russian), QStringLiteral("qtbase"), QStringLiteral("_"),
                         QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(translator);
    QLocale::setDefault(QLocale(QLocale::Russian));
    FocusMark::follow();
    LatinKeys::install();
}

} // namespace orvo::app
