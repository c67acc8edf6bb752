#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QTextStream>

namespace kestrune::cli {

// Columns padded to their widest cell, for terminal listings.
class TextTable {
public:
    explicit TextTable(QStringList header, QList<bool> rightAligned = {});

    void addRow(QStringList cells);
    void print(QTextStream &out) const;

private:
    QList<QStringList> m_rows;
    QList<bool> m_rightAligned;
};

} // namespace kestrune::cli
