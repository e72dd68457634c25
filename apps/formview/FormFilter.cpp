#include "apps/formview/FormFilter.h"

#include "apps/formview/FormProperty.h"
#include "frame/Text.h"

#include <QHash>
#include <QSet>
#include <QUiLoader>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>

namespace orvo::formview {

namespace {

bool is(const QXmlStreamReader& xml, const char* name) {
    return xml.name() == QLatin1String(name);
}

// ---------------------------------------------------------------------------------------------
// First pass: counts, and the classes that the form itself declares at its end.

struct Survey {
    QString refusal;
    QHash<QString, QString> bases; ///< custom class, and what it extends
};

class Counter {
public:
    Counter(const QByteArray& bytes, const FormLimits& limits) : m_xml(bytes), m_limits(limits) {}

    Survey run() {
        while (m_survey.refusal.isEmpty() && !m_xml.atEnd())
            take(m_xml.readNext());
        if (m_survey.refusal.isEmpty() && m_xml.hasError())
            refuse(Text::tr("ошибка в строке %1: %2")
                       .arg(m_xml.lineNumber())
                       .arg(m_xml.errorString().left(200)));
        return m_survey;
    }

private:
    void refuse(const QString& why) { m_survey.refusal = why; }
    void limit(int value, int most, const char* what) {
        if (value > most && m_survey.refusal.isEmpty())
            refuse(Text::tr("%1 больше %2").arg(Text::tr(what)).arg(most));
    }

    void take(QXmlStreamReader::TokenType token) {
        switch (token) {
        case QXmlStreamReader::DTD:
            refuse(Text::tr("форма с объявлением типа документа"));
            break;
        case QXmlStreamReader::StartElement:
            begin();
            break;
        case QXmlStreamReader::EndElement:
            if (is(m_xml, "widget"))
                --m_widgetDepth;
            else if (is(m_xml, "customwidget"))
                m_survey.bases.insert(m_custom.value(QStringLiteral("class")),
                                      m_custom.value(QStringLiteral("extends")));
            m_path.removeLast();
            break;
        case QXmlStreamReader::Characters:
            if (!m_xml.isWhitespace())
                text();
            break;
        default:
            break;
        }
    }

    void begin() {
        if (m_path.isEmpty() && !is(m_xml, "ui"))
            return refuse(Text::tr("это не форма"));
        m_path << m_xml.name().toString();
        limit(m_path.size(), m_limits.xmlDepth, QT_TRANSLATE_NOOP("orvo", "вложенность"));
        limit(++m_elements, m_limits.elements, QT_TRANSLATE_NOOP("orvo", "число элементов"));
        if (is(m_xml, "widget")) {
            limit(++m_widgets, m_limits.widgets, QT_TRANSLATE_NOOP("orvo", "число виджетов"));
            limit(++m_widgetDepth, m_limits.widgetDepth,
                  QT_TRANSLATE_NOOP("orvo", "вложенность виджетов"));
        } else if (is(m_xml, "item")) {
            limit(++m_items, m_limits.items, QT_TRANSLATE_NOOP("orvo", "число строк и ячеек"));
        } else if (is(m_xml, "row")) {
            limit(++m_rows, m_limits.lines, QT_TRANSLATE_NOOP("orvo", "число строк таблиц"));
        } else if (is(m_xml, "column")) {
            limit(++m_columns, m_limits.lines, QT_TRANSLATE_NOOP("orvo", "число столбцов таблиц"));
        } else if (is(m_xml, "connection")) {
            limit(++m_connections, m_limits.connections, QT_TRANSLATE_NOOP("orvo", "число связей"));
        } else if (is(m_xml, "customwidget")) {
            m_custom.clear();
        }
        for (const QXmlStreamAttribute& attribute : m_xml.attributes())
            limit(attribute.value().size(), m_limits.attribute,
                  QT_TRANSLATE_NOOP("orvo", "длина атрибута"));
    }

    void text() {
        m_texts += m_xml.text().size();
        limit(m_texts, m_limits.texts, QT_TRANSLATE_NOOP("orvo", "объём текста"));
        const int depth = m_path.size();
        if (depth >= 2 && m_path[depth - 2] == QLatin1String("customwidget"))
            m_custom[m_path.last()] += m_xml.text().toString();
    }

    QXmlStreamReader m_xml;
    const FormLimits m_limits;
    Survey m_survey;
    QStringList m_path;
    QHash<QString, QString> m_custom;
    int m_elements = 0, m_widgets = 0, m_widgetDepth = 0, m_items = 0, m_rows = 0, m_columns = 0,
        m_connections = 0, m_texts = 0;
};

// ---------------------------------------------------------------------------------------------
// Second pass: what is known is copied.

QSet<QString> ownClasses() {
    QUiLoader loader;
    loader.clearPluginPaths();
    const QStringList names = loader.availableWidgets();
    QSet<QString> classes(names.begin(), names.end());
    classes << QStringLiteral("Line");
    classes.remove(QStringLiteral("QOpenGLWidget")); // there is no graphics card behind the process
    return classes;
}

class Copier {
public:
    Copier(const QByteArray& bytes, const QHash<QString, QString>& bases,
           const std::function<bool(const QString&)>& isPicture, const FormLimits& limits)
        : m_xml(bytes)
        , m_out(&m_form)
        , m_bases(bases)
        , m_limits(limits)
        , m_judge(isPicture, limits, [this](const QString& text) { note(text); }) {}

    FilteredForm run() {
        m_out.writeStartDocument();
        while (!m_xml.atEnd()) {
            m_xml.readNext();
            if (m_xml.isStartElement())
                begin();
            else if (m_xml.isEndElement())
                end();
            else if (m_xml.isCharacters() && !m_xml.isWhitespace())
                m_out.writeCharacters(m_xml.text().toString());
        }
        m_out.writeEndDocument();
        FilteredForm result;
        if (m_xml.hasError())
            result.refusal = m_xml.errorString();
        else
            result.form = m_form;
        result.notes = m_notes;
        return result;
    }

private:
    void note(const QString& text) {
        constexpr int most = 3;
        if (m_notes.contains(text) || m_notes.size() > most)
            return;
        m_notes << (m_notes.size() < most ? text : Text::tr("и другое"));
    }

    void begin() {
        const bool isWidget = is(m_xml, "widget");
        if (is(m_xml, "property") || is(m_xml, "attribute"))
            return property();
        if (is(m_xml, "connection"))
            return connection();
        if (!isKnown())
            return m_xml.skipCurrentElement();
        QXmlStreamAttributes attributes = m_xml.attributes();
        if (isWidget) {
            m_classes << ownClass(attributes.value(QStringLiteral("class")).toString());
            attributes = with(attributes, QStringLiteral("class"), m_classes.last());
        }
        for (const char* place : {"row", "column", "rowspan", "colspan"}) {
            const QString name = QLatin1String(place);
            if (attributes.hasAttribute(name) && !isLine(attributes.value(name).toInt())) {
                note(Text::tr("место в сетке за пределом %1").arg(m_limits.lines));
                attributes = with(attributes, name, QString::number(m_limits.lines - 1));
            }
        }
        m_out.writeStartElement(m_xml.name().toString());
        m_out.writeAttributes(attributes);
    }

    void end() {
        if (is(m_xml, "widget"))
            m_classes.removeLast();
        m_out.writeEndElement();
    }

    bool isLine(int number) const { return number >= 0 && number < m_limits.lines; }

    bool isKnown() const {
        static const QSet<QString> known = [] {
            QSet<QString> names;
            for (const char* name :
                 {"ui", "class", "widget", "layoutdefault", "layout", "item", "spacer", "row",
                  "column", "action", "actiongroup", "addaction", "zorder", "tabstops", "tabstop",
                  "connections", "buttongroups", "buttongroup"})
                names << QLatin1String(name);
            return names;
        }();
        return known.contains(m_xml.name().toString());
    }

    void property() {
        Node node;
        if (!readNode(m_xml, &node)) {
            note(Text::tr("слишком сложное свойство"));
            return;
        }
        if (m_judge.accept(&node, m_classes.isEmpty() ? QString() : m_classes.last()))
            writeNode(m_out, node);
    }

    void connection() {
        Node node;
        if (!readNode(m_xml, &node))
            return;
        const QString slot = node.child(QStringLiteral("slot")).text.trimmed();
        for (const char* destroyer : {"deleteLater", "close", "destroyed"})
            if (slot.startsWith(QLatin1String(destroyer)))
                return note(Text::tr("связь со слотом «%1»").arg(slot.left(40)));
        writeNode(m_out, node);
    }

    /// The class that a form names, or the nearest one below it that is Qt's own.
    QString ownClass(QString name) {
        static const QSet<QString> own = ownClasses();
        constexpr int longestChain = 16; // also ends classes that extend each other
        const QString asked = name;
        for (int i = 0; i < longestChain && !own.contains(name); ++i)
            name = m_bases.value(name);
        if (own.contains(name))
            return name;
        note(Text::tr("виджет неизвестного класса «%1»").arg(asked.left(60)));
        return QStringLiteral("QWidget");
    }

    static QXmlStreamAttributes with(const QXmlStreamAttributes& attributes, const QString& name,
                                     const QString& value) {
        QXmlStreamAttributes changed;
        for (const QXmlStreamAttribute& attribute : attributes)
            if (attribute.name() != name)
                changed.append(attribute);
        changed.append(name, value);
        return changed;
    }

    QXmlStreamReader m_xml;
    QByteArray m_form;
    QXmlStreamWriter m_out;
    const QHash<QString, QString> m_bases;
    const FormLimits m_limits;
    PropertyJudge m_judge;
    QStringList m_classes; ///< of the widgets around
    QStringList m_notes;
};

} // namespace

FilteredForm filterForm(const QByteArray& bytes,
                        const std::function<bool(const QString& name)>& isPicture,
                        const FormLimits& limits) {
    FilteredForm result;
    if (bytes.size() > limits.bytes) {
        result.refusal = Text::tr("форма больше %1 МиБ").arg(limits.bytes >> 20);
        return result;
    }
    const Survey survey = Counter(bytes, limits).run();
    if (!survey.refusal.isEmpty()) {
        result.refusal = survey.refusal;
        return result;
    }
    return Copier(bytes, survey.bases, isPicture, limits).run();
}

} // namespace orvo::formview
