#include "FileNameOrder.h"

#include <QLocale>

namespace kestrune {

namespace {

QLocale collationLocale()
{
    const QLocale system = QLocale::system();
    if (system.language() == QLocale::C)
        return QLocale(QLocale::English, QLocale::UnitedStates);
    return system;
}

} // namespace

FileNameOrder::FileNameOrder() : m_collator(collationLocale())
{
    m_collator.setNumericMode(true);
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
}

bool FileNameOrder::lessThan(const QString &a, const QString &b) const
{
    return m_collator.compare(a, b) < 0;
}

} // namespace kestrune
