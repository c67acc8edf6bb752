#include "ArtworkDBWriter.h"

#include "ByteWriter.h"


namespace kestrune::dbwriter {

namespace {

QByteArray fileNameObject(const ArtworkThumbnail &thumbnail)
{
    const QByteArray text = thumbnail.utf16Name
        ? QByteArray(reinterpret_cast<const char *>(thumbnail.file.utf16()), thumbnail.file.size() * 2)
        : thumbnail.file.toUtf8();
    const qsizetype padding = (4 - text.size() % 4) % 4;
    ByteWriter w;
    w.bytes("mhod").u32(0x18).u32(quint32(36 + text.size() + padding)).u16(3).u8(0).u8(quint8(padding));
    w.padTo(24).u32(thumbnail.nameLength.value_or(quint32(text.size()))).u8(thumbnail.utf16Name ? 2 : 1);
    w.padTo(36).bytes(text).zeros(padding);
    return w.data();
}

QByteArray thumbnailObject(const ArtworkThumbnail &thumbnail)
{
    const QByteArray name = fileNameObject(thumbnail);
    ByteWriter mhni;
    mhni.bytes("mhni").u32(0x4C).u32(quint32(0x4C + name.size())).u32(1).u32(thumbnail.formatId);
    mhni.u32(thumbnail.offset).u32(thumbnail.size);
    mhni.u16(quint16(thumbnail.verticalPadding)).u16(quint16(thumbnail.horizontalPadding));
    mhni.u16(quint16(thumbnail.height)).u16(quint16(thumbnail.width));
    mhni.padTo(0x4C).bytes(name);
    ByteWriter mhod;
    mhod.bytes("mhod").u32(0x18).u32(quint32(0x18 + mhni.size())).u16(2);
    mhod.padTo(0x18).bytes(mhni.data());
    return mhod.data();
}

QByteArray imageItem(const ArtworkImageItem &image)
{
    QByteArray children;
    for (const ArtworkThumbnail &thumbnail : image.thumbnails)
        children += thumbnailObject(thumbnail);
    ByteWriter w;
    w.bytes("mhii").u32(0x98).u32(image.totalLength.value_or(quint32(0x98 + children.size())));
    w.u32(image.childCount.value_or(quint32(image.thumbnails.size()))).u32(image.imageId).u64(image.songId);
    w.padTo(0x98).bytes(children);
    return w.data();
}

QByteArray section(quint16 type, const QByteArray &list)
{
    ByteWriter w;
    w.bytes("mhsd").u32(0x60).u32(quint32(0x60 + list.size())).u16(type);
    w.padTo(0x60).bytes(list);
    return w.data();
}

QByteArray listHeader(const char *tag, quint32 count)
{
    ByteWriter w;
    w.bytes(tag).u32(0x5C).u32(count).padTo(0x5C);
    return w.data();
}

} // namespace

QByteArray artworkDatabase(const QList<ArtworkImageItem> &images, std::optional<quint32> imageCount,
                           std::optional<quint32> totalLength)
{
    QByteArray items;
    QList<quint32> formats;
    for (const ArtworkImageItem &image : images) {
        items += imageItem(image);
        for (const ArtworkThumbnail &thumbnail : image.thumbnails) {
            if (!formats.contains(thumbnail.formatId))
                formats.append(thumbnail.formatId);
        }
    }
    QByteArray formatList = listHeader("mhlf", quint32(formats.size()));
    for (const quint32 format : std::as_const(formats)) {
        ByteWriter w;
        w.bytes("mhif").u32(0x7C).u32(0x7C).u32(0).u32(format).padTo(0x7C);
        formatList += w.data();
    }
    const QByteArray body = section(1, listHeader("mhli", imageCount.value_or(quint32(images.size()))) + items) +
                            section(2, listHeader("mhla", 0)) + section(3, formatList);
    quint32 highestId = 0;
    for (const ArtworkImageItem &image : images)
        highestId = qMax(highestId, image.imageId);
    ByteWriter w;
    w.bytes("mhfd").u32(0x84).u32(totalLength.value_or(quint32(0x84 + body.size()))).u32(0).u32(2).u32(3).u32(0);
    w.u32(highestId).padTo(0x84).bytes(body);
    return w.data();
}

quint32 ArtworkWriter::addImage(quint64 songId, const QList<Thumbnail> &thumbnails)
{
    ArtworkImageItem image{.imageId = quint32(100 + m_images.size()), .songId = songId, .thumbnails = {}};
    for (const Thumbnail &thumbnail : thumbnails) {
        const QString name = QStringLiteral("F%1_1.ithmb").arg(thumbnail.formatId);
        QByteArray &file = m_files[name];
        const int left = (thumbnail.frameWidth - thumbnail.picture.width) / 2;
        const int top = (thumbnail.frameHeight - thumbnail.picture.height) / 2;
        ByteWriter frame;
        for (int y = 0; y < thumbnail.frameHeight; ++y) {
            for (int x = 0; x < thumbnail.frameWidth; ++x) {
                const int px = x - left;
                const int py = y - top;
                const bool inside = px >= 0 && py >= 0 && px < thumbnail.picture.width && py < thumbnail.picture.height;
                frame.u16(inside ? thumbnail.picture.pixels.at(py * thumbnail.picture.width + px) : 0);
            }
        }
        image.thumbnails.append(ArtworkThumbnail{.formatId = thumbnail.formatId, .file = u':' + name,
                                                 .offset = quint32(file.size()), .size = quint32(frame.size()),
                                                 .verticalPadding = qint16(top), .horizontalPadding = qint16(left),
                                                 .height = qint16(top + thumbnail.picture.height),
                                                 .width = qint16(left + thumbnail.picture.width)});
        file += frame.data();
    }
    m_images.append(image);
    return image.imageId;
}

} // namespace kestrune::dbwriter
