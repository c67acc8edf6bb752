#include "ArtworkLibrary.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace kestrune {

namespace {

// Far beyond the database of any iPod's library, and a bound on what a damaged one costs.
constexpr qint64 largestDatabase = 512ll * 1024 * 1024;

// The entry of `folder` named `name` but for ASCII case, as the iPod's own software finds it.
QString entryCaseBlind(const QString &folder, const QString &name)
{
    if (QFileInfo::exists(folder + u'/' + name))
        return name;
    const QStringList entries = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        if (entry.compare(name, Qt::CaseInsensitive) == 0)
            return entry;
    }
    return {};
}

} // namespace

ArtworkLibrary::ArtworkLibrary() = default;
ArtworkLibrary::ArtworkLibrary(ArtworkLibrary &&) noexcept = default;
ArtworkLibrary &ArtworkLibrary::operator=(ArtworkLibrary &&) noexcept = default;
ArtworkLibrary::~ArtworkLibrary() = default;

ArtworkLibrary ArtworkLibrary::open(const QString &iPodRoot)
{
    ArtworkLibrary library;
    library.m_folder = iPodRoot + QStringLiteral("/iPod_Control/Artwork");
    QFile file(library.m_folder + QStringLiteral("/ArtworkDB"));
    if (!QFileInfo(file).isFile()) { // a FIFO or a device would block or never end
        library.m_explanation = QStringLiteral("This iPod has no artwork database: iTunes put no covers on it.");
        return library;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        library.m_state = State::damaged;
        library.m_explanation = QStringLiteral("The artwork database “%1” cannot be read: %2.").arg(file.fileName(), file.errorString());
        return library;
    }
    if (file.size() > largestDatabase) {
        library.m_state = State::damaged;
        library.m_explanation = QStringLiteral("The artwork database “%1” is far larger than any iPod's: %2 bytes.")
                                    .arg(file.fileName())
                                    .arg(file.size());
        return library;
    }
    ArtworkParse parse = parseArtworkDatabase(file.readAll());
    if (!parse.database) {
        library.m_state = State::damaged;
        library.m_explanation = parse.error;
        return library;
    }
    library.m_database = std::move(*parse.database);

    QSet<quint32> unknown;
    for (const ArtworkImage &image : std::as_const(library.m_database.images)) {
        for (const ThumbnailLocation &thumbnail : image.thumbnails) {
            const std::optional<CoverFormat> format = knownCoverFormat(thumbnail.formatId);
            if (!format)
                unknown.insert(thumbnail.formatId);
            else if (qint64(format->width) * format->height > qint64(library.m_format.width) * library.m_format.height)
                library.m_format = *format;
        }
    }
    if (library.m_format.id == 0) {
        library.m_state = State::noCoverFormats;
        QList<quint32> ids(unknown.cbegin(), unknown.cend());
        std::sort(ids.begin(), ids.end());
        QStringList names;
        for (const quint32 id : std::as_const(ids))
            names.append(QString::number(id));
        library.m_explanation = library.m_database.images.isEmpty()
            ? QStringLiteral("The artwork database holds no covers.")
            : QStringLiteral("The iPod's covers are only in formats Kestrune cannot read (%1).").arg(names.join(QStringLiteral(", ")));
        return library;
    }
    library.m_state = State::ready;
    library.mapThumbnailFiles();
    return library;
}

void ArtworkLibrary::mapThumbnailFiles()
{
    for (const ArtworkImage &image : std::as_const(m_database.images)) {
        for (const ThumbnailLocation &thumbnail : image.thumbnails) {
            if (m_files.contains(thumbnail.file))
                continue;
            MappedFile &mapped = m_files[thumbnail.file];
            QString path = m_folder;
            for (const QString &component : thumbnail.file.split(u'/')) {
                const QString entry = entryCaseBlind(path, component);
                path = entry.isEmpty() ? QString() : path + u'/' + entry;
                if (path.isEmpty())
                    break;
            }
            if (path.isEmpty() || !QFileInfo(path).isFile()) {
                mapped.problem = QStringLiteral("its thumbnail file “%1” is missing").arg(thumbnail.file);
                continue;
            }
            mapped.file = std::make_shared<QFile>(path);
            uchar *bytes = nullptr;
            if (mapped.file->open(QIODevice::ReadOnly) && mapped.file->size() > 0)
                bytes = mapped.file->map(0, mapped.file->size());
            if (bytes)
                mapped.bytes = QByteArrayView(bytes, mapped.file->size());
            else
                mapped.problem = QStringLiteral("its thumbnail file “%1” cannot be read: %2").arg(thumbnail.file, mapped.file->errorString());
        }
    }
}

std::variant<ArtworkLibrary::Frame, QString> ArtworkLibrary::frameOf(const ArtworkImage &image) const
{
    // The thumbnail in the library's format, else the largest one of a known format.
    const ThumbnailLocation *chosen = nullptr;
    std::optional<CoverFormat> chosenFormat;
    const auto area = [](const CoverFormat &format) { return qint64(format.width) * format.height; };
    for (const ThumbnailLocation &thumbnail : image.thumbnails) {
        const std::optional<CoverFormat> format = knownCoverFormat(thumbnail.formatId);
        if (format && (!chosenFormat || area(*format) > area(*chosenFormat))) {
            chosen = &thumbnail;
            chosenFormat = format;
        }
    }
    if (!chosen)
        return QStringLiteral("the image has no thumbnail of a known format");
    const std::optional<PictureArea> picture = pictureArea(*chosenFormat, *chosen);
    if (!picture)
        return QStringLiteral("its thumbnail is empty");
    const MappedFile &file = m_files.value(chosen->file);
    if (file.bytes.isNull())
        return file.problem;
    if (qint64(chosen->offset) + chosen->size > file.bytes.size())
        return QStringLiteral("its thumbnail lies beyond the end of “%1”").arg(chosen->file);
    const QByteArrayView bytes = file.bytes.sliced(chosen->offset, chosen->size);
    if (!frameHoldsArea(bytes, *chosenFormat, *picture))
        return QStringLiteral("its thumbnail in “%1” is shorter than its frame").arg(chosen->file);
    return Frame{bytes, *chosenFormat, *picture};
}

} // namespace kestrune
