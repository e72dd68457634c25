#include "apps/formview/FormMark.h"

namespace orvo::formview {

bool looksLikeForm(const QByteArray& bytes, const QString& name) {
    if (name.endsWith(QLatin1String(".ui"), Qt::CaseInsensitive))
        return true;
    QByteArray start = bytes.left(4096);
    if (start.startsWith("\xef\xbb\xbf"))
        start.remove(0, 3);
    start = start.trimmed();
    // A text that merely mentions the mark is no form.
    return start.startsWith("<ui") ||
           ((start.startsWith("<?xml") || start.startsWith("<!--")) && start.contains("<ui"));
}

} // namespace orvo::formview
