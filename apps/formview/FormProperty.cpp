#include "apps/formview/FormProperty.h"

#include "frame/Text.h"

#include <QRegularExpression>
#include <QTextDocument>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>

namespace orvo::formview {

namespace {

bool isOneOf(const QString& name, std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const char* other) { return name == QLatin1String(other); });
}

bool readNode(QXmlStreamReader& xml, Node* node, int depth) {
    constexpr int deepest = 16; // a gradient of a palette has 11
    if (depth > deepest) {
        xml.skipCurrentElement();
        return false;
    }
    node->name = xml.name().toString();
    node->attributes = xml.attributes();
    bool isShallow = true;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement())
            break;
        if (xml.isCharacters())
            node->text += xml.text();
        if (xml.isStartElement()) {
            node->children.emplace_back();
            isShallow = readNode(xml, &node->children.back(), depth + 1) && isShallow;
        }
    }
    return isShallow;
}

} // namespace

Node Node::child(const QString& childName) const {
    for (const Node& node : children)
        if (node.name == childName)
            return node;
    return {};
}

bool readNode(QXmlStreamReader& xml, Node* node) {
    return readNode(xml, node, 1);
}

void writeNode(QXmlStreamWriter& out, const Node& node) {
    out.writeStartElement(node.name);
    out.writeAttributes(node.attributes);
    if (node.children.empty())
        out.writeCharacters(node.text);
    else if (!node.text.trimmed().isEmpty())
        out.writeCharacters(node.text.trimmed()); // an icon's name before its states
    for (const Node& child : node.children)
        writeNode(out, child);
    out.writeEndElement();
}

PropertyJudge::PropertyJudge(std::function<bool(const QString&)> isPicture, FormLimits limits,
                             std::function<void(const QString&)> note)
    : m_isPicture(std::move(isPicture))
    , m_limits(limits)
    , m_note(std::move(note)) {}

bool PropertyJudge::accept(Node* property, const QString& widgetClass) const {
    const QString name = property->attributes.value(QStringLiteral("name")).toString();
    // They open what a text names: files, and addresses in other programs.
    if (isOneOf(name, {"source", "searchPaths", "openLinks", "openExternalLinks"})) {
        m_note(Text::tr("свойство «%1»").arg(name));
        return false;
    }
    for (Node& value : property->children)
        if (!acceptValue(&value, name, widgetClass))
            return false;
    return true;
}

bool PropertyJudge::acceptValue(Node* node, const QString& property,
                                const QString& widgetClass) const {
    const bool isPicture = isOneOf(
        node->name, {"pixmap", "iconset", "normaloff", "normalon", "disabledoff", "disabledon",
                     "activeoff", "activeon", "selectedoff", "selectedon", "texture"});
    const QString file = node->text.trimmed();
    if (isPicture && !file.isEmpty() && !m_isPicture(file)) {
        m_note(
            Text::tr("рисунок «%1»: его нет среди файлов формы, или он велик").arg(file.left(80)));
        return false;
    }
    if (node->name == QLatin1String("url")) {
        m_note(Text::tr("адрес в свойстве «%1»").arg(property));
        return false;
    }
    if (isOneOf(node->name, {"string", "cstring"}) && !acceptText(&node->text, property))
        return false;
    if (!isReasonable(*node, property, widgetClass)) {
        m_note(Text::tr("чрезмерное значение свойства «%1»").arg(property));
        return false;
    }
    return std::all_of(node->children.begin(), node->children.end(),
                       [&](Node& child) { return acceptValue(&child, property, widgetClass); });
}

bool PropertyJudge::acceptText(QString* text, const QString& property) const {
    if (text->size() > m_limits.text) {
        text->truncate(m_limits.text);
        *text += QChar(0x2026);
        m_note(Text::tr("конец длинного текста"));
    }
    if (property == QLatin1String("styleSheet")) {
        static const QRegularExpression suspicious(
            QStringLiteral("\\\\|@import|(?<![#\\d])\\d{6,}"));
        if (text->contains(suspicious) || !refersToStoredOnly(*text)) {
            m_note(Text::tr("таблица стилей, которая ссылается на другие файлы или "
                            "чрезмерна"));
            return false;
        }
        return true;
    }
    if (!text->contains(QLatin1Char('<')))
        return true;
    // Numbers of rows, columns and pixels; escapes that would hide a reference.
    static const QRegularExpression suspicious(
        QStringLiteral("=\\s*[\"']?\\s*[+-]?\\d{5,}|style[^>]*\\\\|<\\s*(link|meta)\\b"),
        QRegularExpression::CaseInsensitiveOption);
    if (text->contains(suspicious) || !refersToStoredOnly(*text)) {
        *text = text->toHtmlEscaped();
        m_note(Text::tr("разметка текста, которая ссылается на другие файлы или чрезмерна"));
    }
    return true;
}

bool PropertyJudge::refersToStoredOnly(const QString& text) const {
    static const QRegularExpression reference(
        QStringLiteral("(?:\\bsrc|\\bbackground)\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)'|([^\\s>\"']*))"
                       "|url\\s*\\(\\s*[\"']?([^\"')]*)[\"']?\\s*\\)?"),
        QRegularExpression::CaseInsensitiveOption);
    auto matches = reference.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        QString file;
        for (int i = 1; i <= match.lastCapturedIndex(); ++i)
            if (!match.captured(i).isEmpty())
                file = match.captured(i).trimmed();
        if (!m_isPicture(file))
            return false;
    }
    return true;
}

bool PropertyJudge::isReasonable(const Node& node, const QString& property,
                                 const QString& widgetClass) const {
    bool isNumber = false;
    const double number = std::abs(node.text.trimmed().toDouble(&isNumber));
    if (!isNumber || isOneOf(node.name, {"string", "cstring", "bool", "enum", "set"}))
        return true;
    if (isOneOf(property, {"rowCount", "columnCount"}))
        return number <= m_limits.lines;
    if (isOneOf(node.name, {"pointsize", "pixelsize", "pointsizef"}))
        return number <= 300;
    if (property == QLatin1String("iconSize"))
        return number <= 512;
    if (property == QLatin1String("maximumSize"))
        return true; // "no limit" is a large number
    if (isOneOf(property, {"geometry", "minimumSize", "sizeIncrement", "baseSize", "sizeHint"}))
        return number <= 16384;
    const bool isRange = isOneOf(property, {"minimum", "maximum", "value", "sliderPosition"});
    // A tick is painted for each value.
    if (isRange && isOneOf(widgetClass, {"QSlider", "QDial"}))
        return number <= 100000;
    if (isRange || isOneOf(property, {"singleStep", "pageStep", "maxLength", "intValue"}))
        return true;
    return std::isfinite(number) && number <= 1000000;
}

} // namespace orvo::formview
