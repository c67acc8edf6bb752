#pragma once

#include "AppLanguage.h"

#include <QObject>
#include <QString>

#include <optional>

namespace kestrune {

// The interface texts in English and Italian. Views ask for a key with the language in force, so a change
// of language re-renders every text. Nothing is cached; each call builds its text afresh.
class L10n {
    Q_GADGET

public:
    // The first nine carry a count (tracksAndDuration also a formatted duration); the others nothing.
    enum class KeyId {
        applyChangesButton,
        totalCount,
        selectAll,
        deleteMultiple,
        pendingDeleteBanner,
        tracksCount,
        tracksAndDuration,
        convertingProgress,
        saveAndExport,
        deviceSelectorNoIpod,
        deviceSelectorOpenFolder,
        deviceSelectorRescan,
        deviceSelectorPrompt,
        exportOptionsTooltip,
        alertTitle,
        alertOk,
        rockboxHeader,
        deselectAll,
        deleteButton,
        cancelButton,
        applyChanges,
        rockboxEmptyTitle,
        rockboxEmptySubtitle,
        showInFinder,
        deleteFromRockbox,
        itunesHeader,
        searchPlaceholder,
        filterSmartOnly,
        itunesEmptyTitle,
        itunesEmptySelectIpod,
        itunesEmptyNoResults,
        readingDatabase,
        badgeSmart,
        badgeLibrary,
        badgeOnRockbox,
        convertButton,
        conversionSuccess,
        exportSettingsTitle,
        exportSettingsSubtitle,
        languageSectionTitle,
        destinationFolderTitle,
        noFolderSelected,
        changeButton,
        formattingSectionTitle,
        extendedM3UTitle,
        extendedM3UDesc,
        m3u8Title,
        m3u8Desc,
        sanitizeTitle,
        sanitizeDesc,
        cleanDotFilesTitle,
        cleanDotFilesDesc,
        customPrefixTitle,
        customPrefixPlaceholder,
        customPrefixDesc,
        footerMadeWith,
        footerBy,
        footerCoffee,
    };
    Q_ENUM(KeyId)

    static constexpr int keyCount = 58;
    static constexpr int payloadKeyCount = 9;

    // A key with its payload, as the views name it: L10n::Key::selectAll(12), or a plain KeyId.
    struct Key {
        KeyId id;
        int count = 0;
        QString text; // tracksAndDuration's duration

        Key(KeyId plain) : id(plain) {} // NOLINT: plain keys read best without a wrapper

        static Key applyChangesButton(int n) { return {KeyId::applyChangesButton, n}; }
        static Key totalCount(int n) { return {KeyId::totalCount, n}; }
        static Key selectAll(int n) { return {KeyId::selectAll, n}; }
        static Key deleteMultiple(int n) { return {KeyId::deleteMultiple, n}; }
        static Key pendingDeleteBanner(int n) { return {KeyId::pendingDeleteBanner, n}; }
        static Key tracksCount(int n) { return {KeyId::tracksCount, n}; }
        static Key tracksAndDuration(int n, QString duration)
        {
            return {KeyId::tracksAndDuration, n, std::move(duration)};
        }
        static Key convertingProgress(int n) { return {KeyId::convertingProgress, n}; }
        static Key saveAndExport(int n) { return {KeyId::saveAndExport, n}; }

        // Italian for "it", English for any other language.
        [[nodiscard]] QString translation(AppLanguage language) const;

    private:
        Key(KeyId payloadId, int n, QString s = {}) : id(payloadId), count(n), text(std::move(s)) {}
    };

    // The text in the given language, or in LocalizationManager::shared()'s when none is given.
    static QString tr(const Key &key, std::optional<AppLanguage> language = std::nullopt);

    static bool hasPayload(KeyId id) { return int(id) < payloadKeyCount; }
    // The key's name as written above ("rockboxHeader"), for lookups by name.
    static QString keyName(KeyId id);
    static std::optional<KeyId> keyFromName(const QString &name);
};

} // namespace kestrune
