// FormProperty.h: the properties of a stored form, and which of them may be set.
#ifndef ORVO_APPS_FORMVIEW_FORMPROPERTY_H
#define ORVO_APPS_FORMVIEW_FORMPROPERTY_H

#include "apps/formview/FormFilter.h"

#include <QXmlStreamAttributes>

#include <vector>

class QXmlStreamReader;
class QXmlStreamWriter;

namespace orvo::formview {

/// A small element with all that is in it.
struct Node {
    QString name;
    QXmlStreamAttributes attributes;
    QString text;
    std::vector<Node> children;

    /// The first child of that name; an empty node if there is none.
    Node child(const QString& childName) const;
};

/// Reads the element at which the reader stands, to its end. False if it is nested too deeply; the
/// reader stands at its end all the same.
bool readNode(QXmlStreamReader& xml, Node* node);
void writeNode(QXmlStreamWriter& out, const Node& node);

class PropertyJudge {
public:
    PropertyJudge(std::function<bool(const QString&)> isPicture, FormLimits limits,
                  std::function<void(const QString&)> note);

    /// Whether the property of a widget of that class may be set; may shorten its texts. Notes what
    /// it leaves out.
    bool accept(Node* property, const QString& widgetClass) const;

private:
    bool acceptValue(Node* node, const QString& property, const QString& widgetClass) const;
    bool acceptText(QString* text, const QString& property) const;
    bool refersToStoredOnly(const QString& text) const;
    bool isReasonable(const Node& node, const QString& property, const QString& widgetClass) const;

    const std::function<bool(const QString&)> m_isPicture;
    const FormLimits m_limits;
    const std::function<void(const QString&)> m_note;
};

} // namespace orvo::formview

#endif
