#include "TrackTexts.h"

#include <algorithm>
#include <cstring>

namespace kestrune {

void TrackTexts::setUtf16(Field field, QByteArrayView littleEndianUtf16)
{
    m_texts[field] = Text{true, littleEndianUtf16, QString()};
}

void TrackTexts::setDecoded(Field field, QString text)
{
    m_texts[field] = Text{false, {}, std::move(text)};
}

void TrackTexts::moveInto(TrackFields &track)
{
    const std::array<QString *, fieldCount> fields{&track.title,    &track.artist,   &track.album,      &track.genre,
                                                   &track.composer, &track.ipodPath, &track.albumArtist};
    qsizetype total = 0;
    for (const Text &text : m_texts)
        total += text.size();
    if (total == 0) {
        for (QString *field : fields)
            field->clear();
        m_texts = {};
        return;
    }

    QString block(total, Qt::Uninitialized);
    QString::DataPointer &shared = block.data_ptr();
    char16_t *at = shared.data();
    for (int field = 0; field < fieldCount; ++field) {
        const Text &text = m_texts[size_t(field)];
        const qsizetype size = text.size();
        if (size == 0) {
            fields[size_t(field)]->clear();
            continue;
        }
        if (text.isUtf16)
            std::memcpy(at, text.utf16.data(), size_t(size) * 2);
        else
            std::copy_n(reinterpret_cast<const char16_t *>(text.decoded.constData()), size, at);
        shared.d_ptr()->ref(); // one more owner of the block
        *fields[size_t(field)] = QString(QString::DataPointer(shared.d_ptr(), at, size));
        at += size;
    }
    m_texts = {};
}

} // namespace kestrune
