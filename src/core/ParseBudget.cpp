#include "ParseBudget.h"

namespace kestrune {

ParseBudget::ParseBudget(qsizetype inputSize) : m_limits(limitsFor(inputSize)) {}

ParseWork ParseBudget::limitsFor(qsizetype inputSize)
{
    const qint64 n = inputSize;
    return ParseWork{.iterations = 4 * n + 1024, .chunks = n / 8 + 64, .decodedBytes = 2 * n + 4096};
}

bool ParseBudget::spend(qint64 &counter, qint64 limit, qint64 amount)
{
    if (m_exhausted || amount > limit - counter) {
        m_exhausted = true;
        m_spent.capped = true;
        return false;
    }
    counter += amount;
    return true;
}

bool ParseBudget::spendIteration()
{
    return spend(m_spent.iterations, m_limits.iterations, 1);
}

bool ParseBudget::spendChunk()
{
    return spend(m_spent.chunks, m_limits.chunks, 1);
}

bool ParseBudget::spendDecodedBytes(qsizetype count)
{
    return spend(m_spent.decodedBytes, m_limits.decodedBytes, count);
}

} // namespace kestrune
