#include "L10n.h"

#include "LocalizationManager.h"

#include <QMetaEnum>

namespace kestrune {

namespace {

struct PlainText {
    L10n::KeyId id;
    const char *english;
    const char *italian;
};

using K = L10n::KeyId;

// The texts without payload, in key order.
constexpr PlainText plainTexts[] = {
    {K::deviceSelectorNoIpod, "No iPod detected in /Volumes/", "Nessun iPod rilevato in /Volumes/"},
    {K::deviceSelectorOpenFolder, "Open iPod / Backup Folder...", "Apri Cartella iPod / Backup..."},
    {K::deviceSelectorRescan, "Rescan Devices", "Riscansiona Dispositivi"},
    {K::deviceSelectorPrompt, "Select iPod...", "Seleziona iPod..."},
    {K::exportOptionsTooltip, "Export Options (v" KESTRUNE_VERSION_SHORT ")",
     "Opzioni di esportazione (v" KESTRUNE_VERSION_SHORT ")"},
    {K::alertTitle, "Notice", "Avviso"},
    {K::alertOk, "OK", "OK"},
    {K::rockboxHeader, "Playlists on iPod (Rockbox)", "Playlist su iPod (Rockbox)"},
    {K::deselectAll, "Deselect all", "Deseleziona tutte"},
    {K::deleteButton, "Delete", "Elimina"},
    {K::cancelButton, "Cancel", "Annulla"},
    {K::applyChanges, "Apply Changes", "Applica Modifiche"},
    {K::rockboxEmptyTitle, "No playlists found on Rockbox", "Nessuna playlist presente su Rockbox"},
    {K::rockboxEmptySubtitle, "Select iTunes playlists on the right and click 'Convert to Rockbox'.",
     "Seleziona le playlist da iTunes a destra e clicca su 'Converti per Rockbox'."},
    {K::showInFinder, "Show in Finder", "Mostra nel Finder"},
    {K::deleteFromRockbox, "Delete from Rockbox", "Elimina da Rockbox"},
    {K::itunesHeader, "iTunes Playlists (iPod Database)", "Playlist iTunes (Database iPod)"},
    {K::searchPlaceholder, "Search by name or artist...", "Cerca per nome o artista..."},
    {K::filterSmartOnly, "Smart Only", "Solo Smart"},
    {K::itunesEmptyTitle, "No playlists found", "Nessuna playlist trovata"},
    {K::itunesEmptySelectIpod, "Select an iPod above to load playlists.",
     "Seleziona un iPod in alto per caricare le playlist."},
    {K::itunesEmptyNoResults, "No playlists matching search filters.",
     "Nessuna playlist corrispondente ai filtri di ricerca."},
    {K::readingDatabase, "Reading iPod database...", "Lettura database iPod..."},
    {K::badgeSmart, "Smart", "Smart"},
    {K::badgeLibrary, "Library", "Libreria"},
    {K::badgeOnRockbox, "On Rockbox", "Esiste su Rockbox"},
    {K::convertButton, "Convert to Rockbox", "Converti per Rockbox"},
    {K::conversionSuccess, "Successfully Converted!", "Convertite con Successo!"},
    {K::exportSettingsTitle, "Export Options", "Opzioni di Esportazione"},
    {K::exportSettingsSubtitle, "Kestrune \u2022 Version " KESTRUNE_VERSION_SHORT,
     "Kestrune \u2022 Versione " KESTRUNE_VERSION_SHORT},
    {K::languageSectionTitle, "Application Language", "Lingua dell'Applicazione"},
    {K::destinationFolderTitle, "Playlists Destination Folder", "Cartella di Base Playlists"},
    {K::noFolderSelected, "No folder selected", "Nessuna cartella selezionata"},
    {K::changeButton, "Change...", "Modifica..."},
    {K::formattingSectionTitle, "Playlist Formatting", "Formattazione Playlist"},
    {K::extendedM3UTitle, "Include Extended M3U Metadata (#EXTINF)",
     "Includi Metadati Extended M3U (#EXTINF)"},
    {K::extendedM3UDesc,
     "Allows Rockbox to display artist, title, and duration even if files are in obfuscated folders "
     "F00..F49.",
     "Permette a Rockbox di visualizzare artista, titolo e durata anche se i file sono in cartelle offuscate "
     "F00..F49."},
    {K::m3u8Title, "Use .m3u8 extension (UTF-8)", "Usa estensione .m3u8 (UTF-8)"},
    {K::m3u8Desc, "Recommended to ensure full support for all Unicode characters and accents.",
     "Consigliato per garantire il supporto completo a tutti i caratteri Unicode e accenti."},
    {K::sanitizeTitle, "Sanitize filenames", "Sanitizza i nomi dei file"},
    {K::sanitizeDesc,
     "Replaces incompatible filesystem characters (e.g. / : * ? \" < > |) with underscores to prevent write "
     "errors.",
     "Sostituisce caratteri incompatibili (es. / : * ? \" < > |) con underscore per evitare errori di "
     "scrittura."},
    {K::cleanDotFilesTitle, "Remove macOS dot files (._*, .DS_Store)",
     "Rimuovi dot file macOS (._*, .DS_Store)"},
    {K::cleanDotFilesDesc,
     "Automatically removes hidden and AppleDouble files from the Playlists folder after export.",
     "Elimina automaticamente i file nascosti e AppleDouble dalla cartella Playlists al termine "
     "dell'esportazione."},
    {K::customPrefixTitle, "Custom Path Prefix (Optional)", "Prefisso Percorso Personalizzato (Opzionale)"},
    {K::customPrefixPlaceholder, "Default: /iPod_Control/Music/...", "Default: /iPod_Control/Music/..."},
    {K::customPrefixDesc, "Leave blank for standard iPod path.",
     "Lascia vuoto per il percorso standard dell'iPod."},
    {K::footerMadeWith, "made with", "made with"},
    {K::footerBy, "by", "by"},
    {K::footerCoffee, "buy me a coffee", "buy me a coffee"},
};
static_assert(std::size(plainTexts) == L10n::keyCount - L10n::payloadKeyCount);

// The lookup indexes the table by key, so each entry must stand at its key's place.
constexpr bool tableFollowsKeyOrder()
{
    for (std::size_t i = 0; i < std::size(plainTexts); ++i) {
        if (int(plainTexts[i].id) != int(i) + L10n::payloadKeyCount)
            return false;
    }
    return true;
}
static_assert(tableFollowsKeyOrder());

QString payloadText(const L10n::Key &key, bool italian)
{
    const QString n = QString::number(key.count);
    switch (key.id) {
    case K::applyChangesButton:
        return (italian ? QStringLiteral("Applica Modifiche (") : QStringLiteral("Apply Changes (")) + n +
               u')';
    case K::totalCount:
        return n + (italian ? QStringLiteral(" totali") : QStringLiteral(" total"));
    case K::selectAll:
        return (italian ? QStringLiteral("Seleziona tutte (") : QStringLiteral("Select all (")) + n + u')';
    case K::deleteMultiple:
        return italian ? QStringLiteral("Elimina ") + n + QStringLiteral(" playlist")
                       : QStringLiteral("Delete ") + n + QStringLiteral(" playlists");
    case K::pendingDeleteBanner:
        return n + (italian ? QStringLiteral(" playlist da eliminare")
                            : QStringLiteral(" playlist(s) to delete"));
    case K::tracksCount:
        return n + (italian ? QStringLiteral(" brani") : QStringLiteral(" tracks"));
    case K::tracksAndDuration:
        return n + (italian ? QStringLiteral(" brani \u2022 ") : QStringLiteral(" tracks \u2022 ")) +
               key.text;
    case K::convertingProgress:
        return (italian ? QStringLiteral("Conversione in corso... ") : QStringLiteral("Converting... ")) + n +
               u'%';
    case K::saveAndExport:
        return (italian ? QStringLiteral("Salva ed Esporta (") : QStringLiteral("Save and Export (")) + n +
               u')';
    default:
        return {};
    }
}

// Where the texts name macOS's own places, the other desktops get theirs; macOS keeps the texts above.
const PlainText *platformText(L10n::KeyId id)
{
#if defined(Q_OS_MACOS)
    Q_UNUSED(id);
    return nullptr;
#else
#if defined(Q_OS_WIN)
    static constexpr PlainText reveal{K::showInFinder, "Show in Explorer", "Mostra in Esplora risorse"};
#else
    static constexpr PlainText reveal{K::showInFinder, "Show in File Manager", "Mostra nel file manager"};
#endif
    static constexpr PlainText noDevice{K::deviceSelectorNoIpod, "No iPod detected", "Nessun iPod rilevato"};
    return id == K::showInFinder ? &reveal : id == K::deviceSelectorNoIpod ? &noDevice : nullptr;
#endif
}

} // namespace

QString L10n::Key::translation(AppLanguage language) const
{
    const bool italian = rawValue(language) == QLatin1StringView("it");
    if (hasPayload(id))
        return payloadText(*this, italian);
    const PlainText *platform = platformText(id);
    const PlainText &entry = platform ? *platform : plainTexts[int(id) - payloadKeyCount];
    return QString::fromUtf8(italian ? entry.italian : entry.english);
}

QString L10n::tr(const Key &key, std::optional<AppLanguage> language)
{
    return key.translation(language.value_or(LocalizationManager::shared().currentLanguage()));
}

QString L10n::keyName(KeyId id)
{
    return QString::fromLatin1(QMetaEnum::fromType<KeyId>().valueToKey(int(id)));
}

std::optional<L10n::KeyId> L10n::keyFromName(const QString &name)
{
    bool ok = false;
    const int value = QMetaEnum::fromType<KeyId>().keyToValue(name.toLatin1().constData(), &ok);
    return ok ? std::optional(KeyId(value)) : std::nullopt;
}

} // namespace kestrune
