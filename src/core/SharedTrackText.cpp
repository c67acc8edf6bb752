#include "SharedTrackText.h"

#include <algorithm>
#include <array>

namespace kestrune {

void shareOneAllocation(Track &track)
{
    const std::array<QString *, 6> fields{&track.title, &track.artist,   &track.album,
                                          &track.genre, &track.composer, &track.ipodPath};
    qsizetype total = 0;
    for (const QString *field : fields)
        total += field->size();
    if (total == 0)
        return;

    QString block(total, Qt::Uninitialized);
    QString::DataPointer &shared = block.data_ptr();
    char16_t *at = shared.data();
    for (QString *field : fields) {
        const qsizetype size = field->size();
        if (size == 0)
            continue;
        std::copy_n(reinterpret_cast<const char16_t *>(field->constData()), size, at);
        shared.d_ptr()->ref(); // one more owner of the block
        *field = QString(QString::DataPointer(shared.d_ptr(), at, size));
        at += size;
    }
}

} // namespace kestrune
