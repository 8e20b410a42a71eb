<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Analyze</name>
    <message>
        <source>The chosen codec is not supported.</source>
        <translation>Der gewählte Codec wird nicht unterstützt.</translation>
    </message>
    <message>
        <source>Unfortunately, the chosen codec is available only in the paid version. Please follow this &lt;a href='%1'&gt;link&lt;/a&gt; to buy the full version or use the presets with a free MJPEG codec.</source>
        <translation>Leider ist der gewählte Codec nur in der kostenpflichtigen Version verfügbar. Folgen Sie diesem &lt;a href='%1'&gt;Link&lt;/a&gt;, um die Vollversion zu kaufen, oder verwenden Sie die Voreinstellungen mit dem kostenlosen MJPEG-Codec.</translation>
    </message>
    <message>
        <source>Some of the files could not been opened because the codec licenses have not been activated.</source>
        <translation>Einige Dateien konnten nicht geöffnet werden, weil die Codec-Lizenzen nicht aktiviert wurden.</translation>
    </message>
    <message>
        <source>No more space left on device</source>
        <translation>Kein freier Speicherplatz mehr auf dem Gerät</translation>
    </message>
    <message>
        <source>Sorry, this file is copyright protected and cannot be converted.</source>
        <translation>Diese Datei ist leider urheberrechtlich geschützt und kann nicht umgewandelt werden.</translation>
    </message>
    <message>
        <source>Out of memory</source>
        <translation>Nicht genügend Arbeitsspeicher</translation>
    </message>
    <message>
        <source>The input file is corrupted or missing from the specified location.</source>
        <translation>Die Eingabedatei ist beschädigt oder fehlt am angegebenen Ort.</translation>
    </message>
    <message>
        <source>An unknown error has occurred. %1</source>
        <translation>Ein unbekannter Fehler ist aufgetreten. %1</translation>
    </message>
</context>
<context>
    <name>Capture</name>
    <message>
        <source>No more space left on device</source>
        <translation>Kein freier Speicherplatz mehr auf dem Gerät</translation>
    </message>
    <message>
        <source>Can not create output file</source>
        <translation>Die Ausgabedatei kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>Out of memory</source>
        <translation>Nicht genügend Arbeitsspeicher</translation>
    </message>
    <message>
        <source>An unknown error has occured</source>
        <translation>Ein unbekannter Fehler ist aufgetreten</translation>
    </message>
</context>
<context>
    <name>CommandProvider</name>
    <message>
        <source>Editor mode. Can be "normal" (default) and "slideshow".</source>
        <translation>Editormodus. Möglich sind „normal“ (Standard) und „slideshow“.</translation>
    </message>
</context>
<context>
    <name>Common</name>
    <message>
        <source>An unknown error has occurred</source>
        <translation>Ein unbekannter Fehler ist aufgetreten</translation>
    </message>
    <message>
        <source>Please contact us at &lt;a href="%1"&gt;%2&lt;/a&gt; to get assistance.</source>
        <translation>Bitte wenden Sie sich an &lt;a href="%1"&gt;%2&lt;/a&gt;, um Hilfe zu erhalten.</translation>
    </message>
</context>
<context>
    <name>Dialog</name>
    <message>
        <source>Save project</source>
        <translation>Projekt speichern</translation>
    </message>
    <message>
        <source>Warning! Current project is not saved. Save project before operation?</source>
        <translation>Achtung! Das aktuelle Projekt ist nicht gespeichert. Projekt vor dem Vorgang speichern?</translation>
    </message>
    <message>
        <source>Don't save</source>
        <translation>Nicht speichern</translation>
    </message>
    <message>
        <source>File exists</source>
        <translation>Datei vorhanden</translation>
    </message>
    <message>
        <source>File "%1" already exists. Overwrite it?</source>
        <translation>Die Datei „%1“ ist bereits vorhanden. Überschreiben?</translation>
    </message>
    <message>
        <source>Folder exist</source>
        <translation>Ordner vorhanden</translation>
    </message>
    <message>
        <source>Folder "%1" already exists. Overwrite it?</source>
        <translation>Der Ordner „%1“ ist bereits vorhanden. Überschreiben?</translation>
    </message>
    <message>
        <source>Recover editing session</source>
        <translation>Bearbeitungssitzung wiederherstellen</translation>
    </message>
    <message>
        <source>Your last editing session ended unexpectedly. Do you want to restore it?</source>
        <translation>Ihre letzte Bearbeitungssitzung wurde unerwartet beendet. Möchten Sie sie wiederherstellen?</translation>
    </message>
    <message>
        <source>Can't open the file</source>
        <translation>Die Datei kann nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Could not find the file %1 at the specified location: %2. The file may have been moved or deleted. Click Browse to find the file at its new location.</source>
        <translation>Die Datei %1 wurde am angegebenen Ort nicht gefunden: %2. Die Datei wurde möglicherweise verschoben oder gelöscht. Klicken Sie auf „Durchsuchen“, um die Datei an ihrem neuen Ort zu finden.</translation>
    </message>
    <message>
        <source>Browse</source>
        <translation>Durchsuchen</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>Überspringen</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Some of the files can't be opened.</source>
        <translation>Einige Dateien können nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>&lt;br&gt;Please choose:&lt;br&gt;Remove unopened files from the project or keep them?</source>
        <translation>&lt;br&gt;Bitte wählen Sie:&lt;br&gt;Nicht geöffnete Dateien aus dem Projekt entfernen oder behalten?</translation>
    </message>
    <message>
        <source>Can't open files</source>
        <translation>Dateien können nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Critical error</source>
        <translation>Schwerwiegender Fehler</translation>
    </message>
    <message>
        <source>Unknown problem has been detected.&lt;br&gt;&lt;br&gt;Please contact us at &lt;a href="%2"&gt;%3&lt;/a&gt; to solve this problem.</source>
        <translation>Ein unbekanntes Problem wurde festgestellt.&lt;br&gt;&lt;br&gt;Bitte wenden Sie sich an &lt;a href="%2"&gt;%3&lt;/a&gt;, um das Problem zu lösen.</translation>
    </message>
</context>
<context>
    <name>Dialog::DialogStrategy</name>
    <message>
        <source>Save project</source>
        <translation>Projekt speichern</translation>
    </message>
    <message>
        <source>Warning! Current project is not saved. Save project before operation?</source>
        <translation>Achtung! Das aktuelle Projekt ist nicht gespeichert. Projekt vor dem Vorgang speichern?</translation>
    </message>
    <message>
        <source>Don't save</source>
        <translation>Nicht speichern</translation>
    </message>
    <message>
        <source>File exists</source>
        <translation>Datei vorhanden</translation>
    </message>
    <message>
        <source>File "%1" already exists. Overwrite it?</source>
        <translation>Die Datei „%1“ ist bereits vorhanden. Überschreiben?</translation>
    </message>
    <message>
        <source>Folder exist</source>
        <translation>Ordner vorhanden</translation>
    </message>
    <message>
        <source>Folder "%1" already exists. Overwrite it?</source>
        <translation>Der Ordner „%1“ ist bereits vorhanden. Überschreiben?</translation>
    </message>
    <message>
        <source>Recover editing session</source>
        <translation>Bearbeitungssitzung wiederherstellen</translation>
    </message>
    <message>
        <source>Your last editing session ended unexpectedly. Do you want to restore it?</source>
        <translation>Ihre letzte Bearbeitungssitzung wurde unerwartet beendet. Möchten Sie sie wiederherstellen?</translation>
    </message>
    <message>
        <source>Can't open the file</source>
        <translation>Die Datei kann nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Could not find the file %1 at the specified location: %2. The file may have been moved or deleted. Click Browse to find the file at its new location.</source>
        <translation>Die Datei %1 wurde am angegebenen Ort nicht gefunden: %2. Die Datei wurde möglicherweise verschoben oder gelöscht. Klicken Sie auf „Durchsuchen“, um die Datei an ihrem neuen Ort zu finden.</translation>
    </message>
    <message>
        <source>Browse</source>
        <translation>Durchsuchen</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>Überspringen</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Some of the files can't be opened.</source>
        <translation>Einige Dateien können nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>&lt;br&gt;Please choose:&lt;br&gt;Remove unopened files from the project or keep them?</source>
        <translation>&lt;br&gt;Bitte wählen Sie:&lt;br&gt;Nicht geöffnete Dateien aus dem Projekt entfernen oder behalten?</translation>
    </message>
    <message>
        <source>Can't open files</source>
        <translation>Dateien können nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Critical error</source>
        <translation>Schwerwiegender Fehler</translation>
    </message>
    <message>
        <source>Unknown problem has been detected.&lt;br&gt;&lt;br&gt;Please contact us at &lt;a href="%2"&gt;%3&lt;/a&gt; to solve this problem.</source>
        <translation>Ein unbekanntes Problem wurde festgestellt.&lt;br&gt;&lt;br&gt;Bitte wenden Sie sich an &lt;a href="%2"&gt;%3&lt;/a&gt;, um das Problem zu lösen.</translation>
    </message>
</context>
<context>
    <name>Dialog::FileInfoDialog</name>
    <message>
        <source>File information</source>
        <translation>Dateiinformationen</translation>
    </message>
    <message>
        <source>File name:</source>
        <translation>Dateiname:</translation>
    </message>
    <message>
        <source>Frame size:</source>
        <translation>Bildgröße:</translation>
    </message>
    <message>
        <source>Frame rate:</source>
        <translation>Bildrate:</translation>
    </message>
    <message>
        <source>Video duration:</source>
        <translation>Videodauer:</translation>
    </message>
    <message>
        <source>Channels:</source>
        <translation>Kanäle:</translation>
    </message>
    <message>
        <source>Audio duration:</source>
        <translation>Audiodauer:</translation>
    </message>
</context>
<context>
    <name>Dialog::ValidationInputDialog</name>
    <message>
        <source>Input string:</source>
        <translation>Eingabe:</translation>
    </message>
</context>
<context>
    <name>Export</name>
    <message>
        <source>Can't export project because of problem with the Intel graphics chip. Try disabling Intel hardware acceleration in the Preferences.</source>
        <translation>Das Projekt kann wegen eines Problems mit dem Intel-Grafikchip nicht exportiert werden. Deaktivieren Sie die Intel-Hardwarebeschleunigung in den Einstellungen.</translation>
    </message>
    <message>
        <source>The frame size is not supported by selected codec encoding implementation.</source>
        <translation>Die Bildgröße wird von der gewählten Codec-Implementierung nicht unterstützt.</translation>
    </message>
    <message>
        <source>The project cannot be exported because the output codec licenses have not been activated.</source>
        <translation>Das Projekt kann nicht exportiert werden, weil die Lizenzen der Ausgabe-Codecs nicht aktiviert wurden.</translation>
    </message>
    <message>
        <source>Some of the files could not been opened because the codec licenses have not been activated.</source>
        <translation>Einige Dateien konnten nicht geöffnet werden, weil die Codec-Lizenzen nicht aktiviert wurden.</translation>
    </message>
    <message>
        <source>Can not create output file</source>
        <translation>Die Ausgabedatei kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>The input file is corrupted or missing from the specified location.</source>
        <translation>Die Eingabedatei ist beschädigt oder fehlt am angegebenen Ort.</translation>
    </message>
    <message>
        <source>The chosen codec is not supported.</source>
        <translation>Der gewählte Codec wird nicht unterstützt.</translation>
    </message>
    <message>
        <source>Unfortunately, the chosen codec is available only in the paid version. Please follow this &lt;a href='%1'&gt;link&lt;/a&gt; to buy the full version or use the presets with a free MJPEG codec.</source>
        <translation>Leider ist der gewählte Codec nur in der kostenpflichtigen Version verfügbar. Folgen Sie diesem &lt;a href='%1'&gt;Link&lt;/a&gt;, um die Vollversion zu kaufen, oder verwenden Sie die Voreinstellungen mit dem kostenlosen MJPEG-Codec.</translation>
    </message>
</context>
<context>
    <name>Filesystem</name>
    <message>
        <source>Open Video Files</source>
        <translation>Videodateien öffnen</translation>
    </message>
    <message>
        <source>Open Audio Files</source>
        <translation>Audiodateien öffnen</translation>
    </message>
    <message>
        <source>Open Image Files</source>
        <translation>Bilddateien öffnen</translation>
    </message>
    <message>
        <source>Open Media Files</source>
        <translation>Mediendateien öffnen</translation>
    </message>
    <message>
        <source>All Supported Files</source>
        <translation>Alle unterstützten Dateien</translation>
    </message>
    <message>
        <source>Media Files</source>
        <translation>Mediendateien</translation>
    </message>
    <message>
        <source>Failed to open files</source>
        <translation>Dateien konnten nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Cannot open files: </source>
        <translation>Dateien können nicht geöffnet werden: </translation>
    </message>
    <message>
        <source>Open Project</source>
        <translation>Projekt öffnen</translation>
    </message>
    <message>
        <source>Project files (%1)</source>
        <translation>Projektdateien (%1)</translation>
    </message>
    <message>
        <source>Open Folder</source>
        <translation>Ordner öffnen</translation>
    </message>
    <message>
        <source>Select Folder</source>
        <translation>Ordner auswählen</translation>
    </message>
    <message>
        <source>Save Project</source>
        <translation>Projekt speichern</translation>
    </message>
    <message>
        <source>Project package (*.%1)</source>
        <translation>Projektpaket (*.%1)</translation>
    </message>
    <message>
        <source>Can not save project file</source>
        <translation>Die Projektdatei kann nicht gespeichert werden</translation>
    </message>
    <message>
        <source>Snapshot files (%1%2)</source>
        <translation>Schnappschussdateien (%1%2)</translation>
    </message>
    <message>
        <source>snapshot</source>
        <translation>schnappschuss</translation>
    </message>
    <message>
        <source>Save Snapshot</source>
        <translation>Schnappschuss speichern</translation>
    </message>
    <message>
        <source>Unsupported symbols</source>
        <translation>Nicht unterstützte Zeichen</translation>
    </message>
    <message>
        <source>Find missing file: </source>
        <translation>Fehlende Datei suchen: </translation>
    </message>
</context>
<context>
    <name>Format</name>
    <message>
        <source>FPS</source>
        <translation>B/s</translation>
    </message>
</context>
<context>
    <name>FreezeFrame</name>
    <message>
        <source>No more space left on device</source>
        <translation>Kein freier Speicherplatz mehr auf dem Gerät</translation>
    </message>
    <message>
        <source>Can not create output file</source>
        <translation>Die Ausgabedatei kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>Out of memory</source>
        <translation>Nicht genügend Arbeitsspeicher</translation>
    </message>
    <message>
        <source>An unknown error has occurred. %1</source>
        <translation>Ein unbekannter Fehler ist aufgetreten. %1</translation>
    </message>
</context>
<context>
    <name>MissingFilesDialog</name>
    <message>
        <source>Missing files</source>
        <translation>Fehlende Dateien</translation>
    </message>
    <message>
        <source>Please, specify the folder with lost files</source>
        <translation>Bitte geben Sie den Ordner mit den verlorenen Dateien an</translation>
    </message>
    <message>
        <source>Your files were moved or deleted, please specify its new location to restore your project.</source>
        <translation>Ihre Dateien wurden verschoben oder gelöscht. Bitte geben Sie ihren neuen Ort an, um Ihr Projekt wiederherzustellen.</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Old path</source>
        <translation>Alter Pfad</translation>
    </message>
    <message>
        <source>Search again</source>
        <translation>Erneut suchen</translation>
    </message>
    <message>
        <source>File search in progress...</source>
        <translation>Dateisuche läuft …</translation>
    </message>
    <message>
        <source>Specify folder</source>
        <translation>Ordner angeben</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>Überspringen</translation>
    </message>
    <message>
        <source>Cancel Search</source>
        <translation>Suche abbrechen</translation>
    </message>
    <message>
        <source>Open Directory</source>
        <translation>Ordner öffnen</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) not found</source>
        <translation>
            <numerusform>%n Datei nicht gefunden</numerusform><numerusform>%n Dateien nicht gefunden</numerusform></translation>
    </message>
    <message>
        <source>%1 of %2 files found</source>
        <translation>%1 von %2 Dateien gefunden</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>Conversion error. Invalid preset settings: unsupported codec for specified format.</source>
        <translation>Umwandlungsfehler. Ungültige Voreinstellung: Der Codec wird für das angegebene Format nicht unterstützt.</translation>
    </message>
    <message>
        <source>No more space left on device</source>
        <translation>Kein freier Speicherplatz mehr auf dem Gerät</translation>
    </message>
    <message>
        <source>Sorry, this file is copyright protected and cannot be converted.</source>
        <translation>Diese Datei ist leider urheberrechtlich geschützt und kann nicht umgewandelt werden.</translation>
    </message>
    <message>
        <source>Conversion error. Out of memory. Try reducing the width and height for the output file.</source>
        <translation>Umwandlungsfehler. Nicht genügend Arbeitsspeicher. Verringern Sie Breite und Höhe der Ausgabedatei.</translation>
    </message>
</context>
<context>
    <name>Stabilization</name>
    <message>
        <source>The frame size is not supported by selected codec encoding implementation.</source>
        <translation>Die Bildgröße wird von der gewählten Codec-Implementierung nicht unterstützt.</translation>
    </message>
    <message>
        <source>The project cannot be exported because the output codec licenses have not been activated.</source>
        <translation>Das Projekt kann nicht exportiert werden, weil die Lizenzen der Ausgabe-Codecs nicht aktiviert wurden.</translation>
    </message>
    <message>
        <source>No more space left on device</source>
        <translation>Kein freier Speicherplatz mehr auf dem Gerät</translation>
    </message>
    <message>
        <source>Sorry, this file is copyright protected and cannot be converted.</source>
        <translation>Diese Datei ist leider urheberrechtlich geschützt und kann nicht umgewandelt werden.</translation>
    </message>
    <message>
        <source>Can not create output file</source>
        <translation>Die Ausgabedatei kann nicht erstellt werden</translation>
    </message>
    <message>
        <source>Out of memory</source>
        <translation>Nicht genügend Arbeitsspeicher</translation>
    </message>
    <message>
        <source>The input file is corrupted or missing from the specified location.</source>
        <translation>Die Eingabedatei ist beschädigt oder fehlt am angegebenen Ort.</translation>
    </message>
    <message>
        <source>Path to stabilized files could not be used. Please select a different directory in Preferences.</source>
        <translation>Der Pfad für stabilisierte Dateien kann nicht verwendet werden. Bitte wählen Sie in den Einstellungen einen anderen Ordner.</translation>
    </message>
    <message>
        <source>An unknown error has occurred. %1</source>
        <translation>Ein unbekannter Fehler ist aufgetreten. %1</translation>
    </message>
</context>
<context>
    <name>Style</name>
    <message>
        <source>Unknown style variable "%1" on line %2</source>
        <translation>Unbekannte Stilvariable „%1“ in Zeile %2</translation>
    </message>
</context>
<context>
    <name>core</name>
    <message>
        <source>Mono</source>
        <translation>Mono</translation>
    </message>
    <message>
        <source>Stereo</source>
        <translation>Stereo</translation>
    </message>
    <message>
        <source>Quad</source>
        <translation>Quad</translation>
    </message>
    <message>
        <source>Unknown</source>
        <translation>Unbekannt</translation>
    </message>
</context>
</TS>