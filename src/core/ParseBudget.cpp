#include "ParseBudget.h"

namespace kestrune {

ParseBudget::ParseBudget(qsizetype inputSize) : m_limits(limitsFor(inputSize)) {}

ParseWork ParseBudget::limitsFor(qsizetype inputSize)
{
    const qint64 n = inputSize;
    return ParseWork{.iterations = 4 * n + 1024, .chunks = n / 8 + 64, .decodedBytes = 2 * n + 4096};
}

ParseBudget ParseBudget::split()
{
    ParseBudget half;
    half.m_limits = {.iterations = (m_limits.iterations - m_spent.iterations) / 2,
                     .chunks = (m_limits.chunks - m_spent.chunks) / 2,
                     .decodedBytes = (m_limits.decodedBytes - m_spent.decodedBytes) / 2};
    m_limits.iterations -= half.m_limits.iterations;
    m_limits.chunks -= half.m_limits.chunks;
    m_limits.decodedBytes -= half.m_limits.decodedBytes;
    return half;
}

void ParseBudget::absorb(const ParseBudget &split)
{
    m_limits.iterations += split.m_limits.iterations;
    m_limits.chunks += split.m_limits.chunks;
    m_limits.decodedBytes += split.m_limits.decodedBytes;
    m_spent.iterations += split.m_spent.iterations;
    m_spent.chunks += split.m_spent.chunks;
    m_spent.decodedBytes += split.m_spent.decodedBytes;
    m_spent.capped = m_spent.capped || split.m_spent.capped;
}

} // namespace kestrune
