#pragma once

#include <QCollator>
#include <QString>

namespace kestrune {

// The order a file browser gives names: locale-aware, case-blind, digit runs compared by value, so
// "Mix 2" comes before "Mix 10". The C and POSIX locales, as on build machines, fall back to English.
class FileNameOrder {
public:
    FileNameOrder();

    [[nodiscard]] bool lessThan(const QString &a, const QString &b) const;

private:
    QCollator m_collator;
};

} // namespace kestrune
