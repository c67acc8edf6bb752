#pragma once

#include "ArtworkDatabase.h"
#include "ThumbnailPixels.h"

#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <memory>
#include <optional>
#include <variant>

class QFile;

namespace kestrune {

// The covers an iPod keeps (iPod_Control/Artwork): its artwork database and thumbnail files, ready for
// the pixels of each image at the largest size the iPod stores. The thumbnail files are mapped, not
// read, and stay so while the library lives; frames may be read from several threads at once.
class ArtworkLibrary {
public:
    enum class State {
        ready,
        noDatabase,     // no artwork database: iTunes put no covers on this iPod
        noCoverFormats, // covers, but none in a format known to be RGB565 of a known frame
        damaged,        // the database cannot be read or understood
    };

    [[nodiscard]] static ArtworkLibrary open(const QString &iPodRoot);
    ArtworkLibrary(ArtworkLibrary &&) noexcept;
    ArtworkLibrary &operator=(ArtworkLibrary &&) noexcept;
    ~ArtworkLibrary();

    [[nodiscard]] State state() const { return m_state; }
    // One line for a person when the state is not ready.
    [[nodiscard]] const QString &explanation() const { return m_explanation; }
    [[nodiscard]] const ArtworkDatabase &database() const { return m_database; }
    // The largest format the iPod stores, what every cover is taken from when its image has it.
    [[nodiscard]] const CoverFormat &format() const { return m_format; }

    // An image's frame at the largest size it has, and the part its picture fills; or why there is none.
    struct Frame {
        QByteArrayView bytes;
        CoverFormat format;
        PictureArea area;
    };
    [[nodiscard]] std::variant<Frame, QString> frameOf(const ArtworkImage &image) const;

private:
    ArtworkLibrary();
    void mapThumbnailFiles();

    State m_state = State::noDatabase;
    QString m_explanation;
    QString m_folder;
    ArtworkDatabase m_database;
    CoverFormat m_format;
    // By the name the database gives, found case-blind when the library opened; the bytes stay mapped.
    struct MappedFile {
        std::shared_ptr<QFile> file;
        QByteArrayView bytes;
        QString problem; // why there are no bytes
    };
    QHash<QString, MappedFile> m_files;
};

} // namespace kestrune
