#include "TreeText.h"

#include <QVector>

namespace treetext {

namespace {

QVariant value(const QString& text) {
    if (text == "true" || text == "false")
        return text == "true";
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber ? QVariant(number) : QVariant(text);
}

int indentation(const QString& line) {
    int blanks = 0;
    while (blanks < line.size() && line.at(blanks) == ' ')
        ++blanks;
    return blanks / 2;
}

} // namespace

void fill(QAbstractItemModel& model, int keyColumn, const QString& text,
          const QModelIndex& parent) {
    QVector<QPersistentModelIndex> parents{parent};
    const QStringList lines = text.split('\n', Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        if (line.trimmed().isEmpty())
            continue;
        const int level = indentation(line);
        if (level >= parents.size())
            qFatal("no parent for the line \"%s\"", qPrintable(line));
        const QModelIndex under = parents.at(level);
        const int row = model.rowCount(under);
        if (!model.insertRows(row, 1, under))
            qFatal("no row for the line \"%s\"", qPrintable(line));
        const QStringList words = line.split(' ', Qt::SkipEmptyParts);
        model.setData(model.index(row, 0, under), words.first());
        for (const QString& word : words.mid(1)) {
            const int equals = word.indexOf('=');
            if (word.startsWith('#'))
                model.setData(model.index(row, keyColumn, under), word.mid(1));
            else
                model.setData(model.index(row, word.left(equals).toInt(), under),
                              value(word.mid(equals + 1)));
        }
        parents.resize(level + 1);
        parents.append(model.index(row, 0, under));
    }
}

QString print(const QAbstractItemModel& model, int keyColumn, const QList<int>& columns,
              const QModelIndex& parent, int level) {
    QString text;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        text += QString(2 * level, ' ') + index.data().toString();
        const QString key = index.sibling(row, keyColumn).data().toString();
        if (!key.isEmpty())
            text += " #" + key;
        for (const int column : columns)
            text += QString(" %1=%2").arg(column).arg(index.sibling(row, column).data().toString());
        text += '\n' + print(model, keyColumn, columns, index, level + 1);
    }
    return text;
}

QStringList headers(int count) {
    QStringList list;
    for (int i = 0; i < count; ++i)
        list.append(QString::number(i));
    return list;
}

QModelIndex matchKey(const QAbstractItemModel& model, const QString& key) {
    return model
        .match(model.index(0, 0), 12, key, 1,
               Qt::MatchFixedString | Qt::MatchWrap | Qt::MatchRecursive)
        .value(0);
}

} // namespace treetext
