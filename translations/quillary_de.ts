<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>DirectWrite</name>
    <message>
        <source>%1. The file is damaged; what should be in it is kept in %2</source>
        <translation>%1. Die Datei ist beschädigt; was darin stehen sollte, liegt in %2</translation>
    </message>
    <message>
        <source>The folder allows no new file, and no copy could be kept in %1</source>
        <translation>Der Ordner lässt keine neue Datei zu, und in %1 ließ sich keine Kopie aufbewahren</translation>
    </message>
</context>
<context>
    <name>Extraction</name>
    <message>
        <source>There is something of that name that is no regular file</source>
        <translation>Unter diesem Namen gibt es etwas, das keine gewöhnliche Datei ist</translation>
    </message>
    <message>
        <source>Its name is no name for a directory</source>
        <translation>Der Name eignet sich nicht für ein Verzeichnis</translation>
    </message>
    <message>
        <source>The directory could not be created</source>
        <translation>Das Verzeichnis konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>A link of that name leads out of the chosen folder</source>
        <translation>Eine Verknüpfung dieses Namens führt aus dem gewählten Ordner hinaus</translation>
    </message>
    <message>
        <source>Its name is no name for a file</source>
        <translation>Der Name eignet sich nicht für eine Datei</translation>
    </message>
    <message>
        <source>It has no data</source>
        <translation>Es sind keine Daten vorhanden</translation>
    </message>
    <message>
        <source>Its format is not supported</source>
        <translation>Das Format wird nicht unterstützt</translation>
    </message>
    <message>
        <source>Its data gives no picture</source>
        <translation>Die Daten ergeben kein Bild</translation>
    </message>
    <message>
        <source>It could not be encoded as PNG</source>
        <translation>Das Bild konnte nicht als PNG gespeichert werden</translation>
    </message>
</context>
<context>
    <name>FileListFiles</name>
    <message>
        <source>There are too many copies already</source>
        <translation>Es gibt schon zu viele Kopien</translation>
    </message>
    <message>
        <source>The list that is there was not read whole, and no copy of it could be made: %1</source>
        <translation>Die vorhandene Liste wurde nicht ganz gelesen, und sie ließ sich nicht kopieren: %1</translation>
    </message>
</context>
<context>
    <name>FileLock</name>
    <message>
        <source>Another program is changing it; its lock is %1</source>
        <translation>Ein anderes Programm ändert sie gerade; seine Sperrdatei ist %1</translation>
    </message>
</context>
<context>
    <name>FolderImport</name>
    <message>
        <source>The program tried to import into a non-existent folder.</source>
        <translation>Der Ordner, in den importiert werden sollte, ist nicht vorhanden.</translation>
    </message>
    <message>
        <source>File format not supported.</source>
        <translation>Das Dateiformat wird nicht unterstützt.</translation>
    </message>
    <message>
        <source>Incorrect image dimensions.</source>
        <translation>Die Bildmaße stimmen nicht.</translation>
    </message>
    <message>
        <source>Its palette lies outside the image.</source>
        <translation>Seine Palette liegt außerhalb des Abbilds.</translation>
    </message>
    <message>
        <source>No folder named %1 in %2.</source>
        <translation>%2 enthält keinen Ordner namens %1.</translation>
    </message>
    <message>
        <source>%1 was not imported. %2</source>
        <translation>%1 wurde nicht importiert. %2</translation>
    </message>
</context>
<context>
    <name>FormatCompleter</name>
    <message>
        <source>The formats are: %1</source>
        <translation>Die Formate sind: %1</translation>
    </message>
</context>
<context>
    <name>Gallery</name>
    <message>
        <source>palette</source>
        <translation>Palette</translation>
    </message>
    <message>
        <source>%1 bytes</source>
        <translation>%1 Bytes</translation>
    </message>
    <message>
        <source>no picture</source>
        <translation>kein Bild</translation>
    </message>
    <message>
        <source>left out: the page is full</source>
        <translation>ausgelassen: die Seite ist voll</translation>
    </message>
    <message>
        <source>There is no such format.</source>
        <translation>Ein solches Format gibt es nicht.</translation>
    </message>
    <message>
        <source>The bytes give no picture.</source>
        <translation>Die Bytes ergeben kein Bild.</translation>
    </message>
    <message>
        <source>It reaches beyond the end of the image.</source>
        <translation>Es reicht über das Ende des Abbilds hinaus.</translation>
    </message>
</context>
<context>
    <name>ImageFile</name>
    <message>
        <source>It is not a regular file</source>
        <translation>Es ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>It is larger than 2 GiB</source>
        <translation>Sie ist größer als 2 GiB</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Abort</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Open...</source>
        <translation>Öffnen...</translation>
    </message>
    <message>
        <source>Open a file</source>
        <translation>Eine Datei öffnen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Save the file to disk</source>
        <translation>Die Datei speichern</translation>
    </message>
    <message>
        <source>Save As...</source>
        <translation>Speichern unter...</translation>
    </message>
    <message>
        <source>Save the file under a new name</source>
        <translation>Die Datei unter einem neuen Namen speichern</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Exit the application</source>
        <translation>Das Programm beenden</translation>
    </message>
    <message>
        <source>Extract</source>
        <translation>Extrahieren</translation>
    </message>
    <message>
        <source>Extract the currently selected folder/texture</source>
        <translation>Den ausgewählten Ordner oder die ausgewählte Textur extrahieren</translation>
    </message>
    <message>
        <source>Import Image</source>
        <translation>Bild importieren</translation>
    </message>
    <message>
        <source>Import an image over the last selected texture</source>
        <translation>Die zuletzt ausgewählte Textur durch ein Bild ersetzen</translation>
    </message>
    <message>
        <source>Import Folder</source>
        <translation>Ordner importieren</translation>
    </message>
    <message>
        <source>Import a folder of textures, replacing textures with the same name</source>
        <translation>Einen Ordner mit Texturen importieren und gleichnamige Texturen ersetzen</translation>
    </message>
    <message>
        <source>Import Texture Pack</source>
        <translation>Texturpaket importieren</translation>
    </message>
    <message>
        <source>Import a texture pack</source>
        <translation>Ein Texturpaket importieren</translation>
    </message>
    <message>
        <source>Find Texture</source>
        <translation>Textur suchen</translation>
    </message>
    <message>
        <source>Provide an image and the application will try to find it in the file</source>
        <translation>Ein Bild angeben, das in der Datei gesucht werden soll</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>Create a new folder</source>
        <translation>Einen neuen Ordner anlegen</translation>
    </message>
    <message>
        <source>New Texture</source>
        <translation>Neue Textur</translation>
    </message>
    <message>
        <source>Create a new texture</source>
        <translation>Eine neue Textur anlegen</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete the currently selected folder/texture</source>
        <translation>Den ausgewählten Ordner oder die ausgewählte Textur löschen</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über</translation>
    </message>
    <message>
        <source>Show the application&apos;s About box</source>
        <translation>Angaben zum Programm anzeigen</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importieren</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>Selection</source>
        <translation>Auswahl</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>&amp;%1 %2</source>
        <translation>&amp;%1 %2</translation>
    </message>
    <message>
        <source>No File Loaded</source>
        <translation>Keine Datei geladen</translation>
    </message>
    <message>
        <source>Application</source>
        <translation>Anwendung</translation>
    </message>
    <message>
        <source>The file has been modified.
Do you want to save your changes?</source>
        <translation>Die Datei wurde geändert.
Möchten Sie Ihre Änderungen speichern?</translation>
    </message>
    <message>
        <source>Open File</source>
        <translation>Datei öffnen</translation>
    </message>
    <message>
        <source>Any files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Save File</source>
        <translation>Datei speichern</translation>
    </message>
    <message>
        <source>About Quillary</source>
        <translation>Über Quillary</translation>
    </message>
    <message>
        <source>&lt;b&gt;Quillary&lt;/b&gt;&lt;br&gt;&lt;br&gt;This is my very first application, so there may be issues.&lt;br&gt;Always keep a backup when you edit files.&lt;br&gt;Updates can be found on my web site, &lt;a href=&quot;https://quillary.example&quot;&gt;quillary.example&lt;/a&gt;.&lt;br&gt;&lt;br&gt;Brimholt, 2014</source>
        <translation>&lt;b&gt;Quillary&lt;/b&gt;&lt;br&gt;&lt;br&gt;Dies ist mein allererstes Programm, es kann also Fehler enthalten.&lt;br&gt;Bewahren Sie immer eine Sicherungskopie auf, wenn Sie Dateien bearbeiten.&lt;br&gt;Neue Versionen finden Sie auf meiner Website &lt;a href=&quot;https://quillary.example&quot;&gt;quillary.example&lt;/a&gt;.&lt;br&gt;&lt;br&gt;Brimholt, 2014</translation>
    </message>
    <message>
        <source>The changes in the file list could not be saved.
Do you want to close and lose them?</source>
        <translation>Die Änderungen an der Dateiliste konnten nicht gespeichert werden.
Möchten Sie das Programm schließen und sie verlieren?</translation>
    </message>
    <message>
        <source>Couldn&apos;t open %1</source>
        <translation>%1 konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>The list is kept as it was in %1.</source>
        <translation>Die Liste bleibt in ihrem bisherigen Zustand in %1 erhalten.</translation>
    </message>
    <message>
        <source>Grid Layout</source>
        <translation>Rasteranordnung</translation>
    </message>
    <message>
        <source>Grid Preview</source>
        <translation>Rastervorschau</translation>
    </message>
    <message>
        <source>The generated texture returned as NULL. Can&apos;t dislay texture.</source>
        <translation>Die Daten ergeben kein Bild. Die Textur kann nicht angezeigt werden.</translation>
    </message>
    <message>
        <source>Cannot read file %1:
%2.</source>
        <translation>Die Datei %1 kann nicht gelesen werden:
%2.</translation>
    </message>
    <message>
        <source>File loaded</source>
        <translation>Datei geladen</translation>
    </message>
    <message>
        <source>Converting ROM from Byteswapped Big Endian to Big Endian.</source>
        <translation>Die Byte-Reihenfolge des ROMs wird von Big Endian mit vertauschten Bytes in Big Endian umgewandelt.</translation>
    </message>
    <message>
        <source>Converting ROM from Little Endian to Big Endian.</source>
        <translation>Die Byte-Reihenfolge des ROMs wird von Little Endian in Big Endian umgewandelt.</translation>
    </message>
    <message>
        <source>Cannot write file %1:
%2.</source>
        <translation>Die Datei %1 kann nicht geschrieben werden:
%2.</translation>
    </message>
    <message>
        <source>File saved</source>
        <translation>Datei gespeichert</translation>
    </message>
    <message>
        <source>There are unsaved changes.</source>
        <translation>Es gibt ungespeicherte Änderungen.</translation>
    </message>
    <message>
        <source>Save changes</source>
        <translation>Änderungen speichern</translation>
    </message>
    <message>
        <source>Last Selected Folder</source>
        <translation>Zuletzt ausgewählter Ordner</translation>
    </message>
    <message>
        <source>Path:</source>
        <translation>Pfad:</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>Offset:</source>
        <translation>Offset:</translation>
    </message>
    <message>
        <source>Address:</source>
        <translation>Adresse:</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>Fixed content addresses</source>
        <translation>Adressen des Inhalts beibehalten</translation>
    </message>
    <message>
        <source>When this is enabled, the offset of the content is modified so that their addresses stay the same, even if you move the folder.</source>
        <translation>Wenn dies eingeschaltet ist, werden die Offsets des Inhalts so angepasst, dass seine Adressen gleich bleiben, auch wenn Sie den Ordner verschieben.</translation>
    </message>
    <message>
        <source>Last Selected Texture</source>
        <translation>Zuletzt ausgewählte Textur</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format:</translation>
    </message>
    <message>
        <source>Palette Address:</source>
        <translation>Palettenadresse:</translation>
    </message>
    <message>
        <source>Width:</source>
        <translation>Breite:</translation>
    </message>
    <message>
        <source>Height:</source>
        <translation>Höhe:</translation>
    </message>
    <message>
        <source>The changes to the last selected folder has been saved.</source>
        <translation>Die Änderungen am zuletzt ausgewählten Ordner wurden gespeichert.</translation>
    </message>
    <message>
        <source>The changes to the last selected texture has been saved.</source>
        <translation>Die Änderungen an der zuletzt ausgewählten Textur wurden gespeichert.</translation>
    </message>
    <message>
        <source>The texture format is not supported.</source>
        <translation>Das Texturformat wird nicht unterstützt.</translation>
    </message>
    <message>
        <source>The texture extends past the end of the file. Can&apos;t display texture.</source>
        <translation>Die Textur reicht über das Ende der Datei hinaus. Sie kann nicht angezeigt werden.</translation>
    </message>
    <message>
        <source>The texture exceeds 1048576 pixels. Can&apos;t display texture.</source>
        <translation>Die Textur hat mehr als 1048576 Pixel. Sie kann nicht angezeigt werden.</translation>
    </message>
    <message>
        <source>This textures address is not the start of a jpeg texture.</source>
        <translation>An der Adresse dieser Textur beginnt keine JPEG-Textur.</translation>
    </message>
    <message>
        <source>NULL was returned when trying to obtain the textures data. Can&apos;t display texture.</source>
        <translation>Die Daten der Textur konnten nicht gelesen werden. Die Textur kann nicht angezeigt werden.</translation>
    </message>
    <message>
        <source>Texture Preview</source>
        <translation>Texturvorschau</translation>
    </message>
    <message>
        <source>Global Settings</source>
        <translation>Allgemeine Einstellungen</translation>
    </message>
    <message>
        <source>ID:</source>
        <translation>Kennung:</translation>
    </message>
    <message>
        <source>Autoload Profile:</source>
        <translation>Startprofil:</translation>
    </message>
    <message>
        <source>Auto Save:</source>
        <translation>Automatisch speichern:</translation>
    </message>
    <message>
        <source>When enabled, the profile will be saved when you Open a file, Save the file, or close the program.</source>
        <translation>Wenn dies eingeschaltet ist, wird das Profil gespeichert, wenn Sie eine Datei öffnen, die Datei speichern oder das Programm schließen.</translation>
    </message>
    <message>
        <source>Profile Settings</source>
        <translation>Profileinstellungen</translation>
    </message>
    <message>
        <source>There are unsaved changes in the file list.</source>
        <translation>Die Dateiliste enthält ungespeicherte Änderungen.</translation>
    </message>
    <message>
        <source>Current Profile:</source>
        <translation>Aktuelles Profil:</translation>
    </message>
    <message>
        <source>Profile:</source>
        <translation>Profil:</translation>
    </message>
    <message>
        <source>Load</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>There are unsaved changes.
What do you want to do?</source>
        <translation>Es gibt ungespeicherte Änderungen.
Was möchten Sie tun?</translation>
    </message>
    <message>
        <source>Save and Load</source>
        <translation>Speichern und laden</translation>
    </message>
    <message>
        <source>Profile loaded.</source>
        <translation>Profil geladen.</translation>
    </message>
    <message>
        <source>You are about to save %1 over %2.
What do you want to do?</source>
        <translation>Sie sind dabei, das Profil %2 mit %1 zu überschreiben.
Was möchten Sie tun?</translation>
    </message>
    <message>
        <source>Profile saved.</source>
        <translation>Profil gespeichert.</translation>
    </message>
    <message>
        <source>Create new profile</source>
        <translation>Neues Profil anlegen</translation>
    </message>
    <message>
        <source>Profile Name:</source>
        <translation>Name des Profils:</translation>
    </message>
    <message>
        <source>The name included invalid file name characters.</source>
        <translation>Der Name enthält Zeichen, die in Dateinamen nicht erlaubt sind.</translation>
    </message>
    <message>
        <source>A profile with that name already exists.</source>
        <translation>Ein Profil mit diesem Namen gibt es schon.</translation>
    </message>
    <message>
        <source>Couldn&apos;t create %1</source>
        <translation>%1 konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Profile created.</source>
        <translation>Profil angelegt.</translation>
    </message>
    <message>
        <source>You can not delete the autoload profile.</source>
        <translation>Das Startprofil kann nicht gelöscht werden.</translation>
    </message>
    <message>
        <source>You can not delete a profile that is currently loaded.</source>
        <translation>Das zurzeit geladene Profil kann nicht gelöscht werden.</translation>
    </message>
    <message>
        <source>You are about to delete %1.
This will delete the profile and all of its files permanently.
Do you want to continue?</source>
        <translation>Sie sind dabei, %1 zu löschen.
Das Profil und alle seine Dateien werden endgültig gelöscht.
Möchten Sie fortfahren?</translation>
    </message>
    <message>
        <source>Couldn&apos;t delete %1</source>
        <translation>%1 konnte nicht gelöscht werden</translation>
    </message>
    <message>
        <source>Profile deleted.</source>
        <translation>Profil gelöscht.</translation>
    </message>
    <message>
        <source>You must select a folder to search in.</source>
        <translation>Wählen Sie zuerst einen Ordner aus, in dem gesucht werden soll.</translation>
    </message>
    <message>
        <source>Searching for %1...</source>
        <translation>%1 wird gesucht...</translation>
    </message>
    <message>
        <source>Cannot read file %1.</source>
        <translation>Die Datei %1 kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Searching in %1%2, from address %3 to %4.
Note that searching within large amounts of data is very slow.</source>
        <translation>Gesucht wird in %1%2, von Adresse %3 bis %4.
Die Suche in großen Datenmengen dauert sehr lange.</translation>
    </message>
    <message>
        <source>Initializing search...</source>
        <translation>Die Suche wird vorbereitet...</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Select Directory</source>
        <translation>Verzeichnis auswählen</translation>
    </message>
    <message>
        <source>Keep Aspect Ratio</source>
        <translation>Seitenverhältnis beibehalten</translation>
    </message>
    <message>
        <source>Ignore Aspect Ratio</source>
        <translation>Seitenverhältnis ignorieren</translation>
    </message>
    <message>
        <source>The provided image is %1x%2 while the texture is %3x%4.<byte value="xd"/>
The image must be resized before it can be imported.</source>
        <translation>Das angegebene Bild misst %1x%2, die Textur jedoch %3x%4.<byte value="xd"/>
Vor dem Importieren muss die Größe des Bildes angepasst werden.</translation>
    </message>
    <message>
        <source>What do you want to do?</source>
        <translation>Was möchten Sie tun?</translation>
    </message>
    <message>
        <source>You must select a texture in the list to import over</source>
        <translation>Wählen Sie in der Liste die Textur aus, die ersetzt werden soll</translation>
    </message>
    <message>
        <source>The selected texture is missing data</source>
        <translation>Der ausgewählten Textur fehlen Daten</translation>
    </message>
    <message>
        <source>Quillary</source>
        <translation>Quillary</translation>
    </message>
    <message>
        <source>Texture format %1 is not supported, can&apos;t import texture.</source>
        <translation>Das Texturformat %1 wird nicht unterstützt, die Textur kann nicht importiert werden.</translation>
    </message>
    <message>
        <source>Texture format %1 is not supported, can&apos;t import texture</source>
        <translation>Das Texturformat %1 wird nicht unterstützt, die Textur kann nicht importiert werden</translation>
    </message>
    <message>
        <source>Choose texture</source>
        <translation>Textur auswählen</translation>
    </message>
    <message>
        <source>Image</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Could not import texture</source>
        <translation>Die Textur konnte nicht importiert werden</translation>
    </message>
    <message>
        <source>Texture imported</source>
        <translation>Textur importiert</translation>
    </message>
    <message>
        <source>Texture format %1 is not supported, can&apos;t extract texture</source>
        <translation>Das Texturformat %1 wird nicht unterstützt, die Textur kann nicht extrahiert werden</translation>
    </message>
    <message>
        <source>Images</source>
        <translation>Bilder</translation>
    </message>
    <message>
        <source>Texture extracted</source>
        <translation>Textur extrahiert</translation>
    </message>
    <message>
        <source>Could not extract texture (unsupported format or missing data)</source>
        <translation>Die Textur konnte nicht extrahiert werden (Format nicht unterstützt oder Daten fehlen)</translation>
    </message>
    <message>
        <source>You must select a folder or a texture in the list to extract</source>
        <translation>Wählen Sie in der Liste einen Ordner oder eine Textur zum Extrahieren aus</translation>
    </message>
    <message>
        <source>Folder extracted</source>
        <translation>Ordner extrahiert</translation>
    </message>
    <message>
        <source>Importing textures</source>
        <translation>Texturen werden importiert</translation>
    </message>
    <message>
        <source>%1 has been imported into %2</source>
        <translation>%1 wurde in %2 importiert</translation>
    </message>
    <message>
        <source>Are you sure that you want to delete the selected folder?</source>
        <translation>Möchten Sie den ausgewählten Ordner wirklich löschen?</translation>
    </message>
    <message>
        <source>Are you sure that you want to delete the selected texture?</source>
        <translation>Möchten Sie die ausgewählte Textur wirklich löschen?</translation>
    </message>
    <message>
        <source>Are you sure that you want to delete the selected none?</source>
        <translation>Es ist nichts ausgewählt. Möchten Sie wirklich löschen?</translation>
    </message>
    <message>
        <source>File table</source>
        <translation>Dateitabelle</translation>
    </message>
    <message>
        <source>File</source>
        <comment>column</comment>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Offset</source>
        <translation>Offset</translation>
    </message>
    <message>
        <source>Offset End</source>
        <translation>End-Offset</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>Address End</source>
        <translation>End-Adresse</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Palette Address</source>
        <translation>Paletten-Adresse</translation>
    </message>
    <message>
        <source>Could not read image file</source>
        <translation>Die Bilddatei konnte nicht gelesen werden</translation>
    </message>
    <message>
        <source>There was an error with the texture converision: Incorrect length. Texture was not imported</source>
        <translation>Fehler beim Umwandeln der Textur: Die Länge stimmt nicht. Die Textur wurde nicht importiert</translation>
    </message>
    <message>
        <source>The texture is using an unsupported format. Texture was not imported</source>
        <translation>Das Format der Textur wird nicht unterstützt. Die Textur wurde nicht importiert</translation>
    </message>
    <message>
        <source>%1 is a link that leads out of the profiles folder.</source>
        <translation>%1 ist ein Verweis, der aus dem Ordner der Profile hinausführt.</translation>
    </message>
    <message>
        <source>Pixel %1, %2</source>
        <translation>Pixel %1, %2</translation>
    </message>
    <message>
        <source>Pixel %1, %2, address %3, value %4</source>
        <translation>Pixel %1, %2, Adresse %3, Wert %4</translation>
    </message>
    <message>
        <source>No copies found.</source>
        <translation>Keine Kopien gefunden.</translation>
    </message>
    <message>
        <source>Copies found: %1. Pictures found: %2 of %3.</source>
        <translation>Gefundene Kopien: %1. Gefundene Bilder: %2 von %3.</translation>
    </message>
    <message>
        <source>Up, Down: one texel
Page Up, Page Down: one row
Ctrl+Page Up, Ctrl+Page Down: one texture</source>
        <translation>Auf, Ab: ein Texel
Bild auf, Bild ab: eine Zeile
Strg+Bild auf, Strg+Bild ab: eine Textur</translation>
    </message>
    <message>
        <source>Address in the image: %1
Up, Down: one colour
Page Up, Page Down: one palette
Ctrl+Page Up, Ctrl+Page Down: one texture</source>
        <translation>Adresse im Abbild: %1
Auf, Ab: eine Farbe
Bild auf, Bild ab: eine Palette
Strg+Bild auf, Strg+Bild ab: eine Textur</translation>
    </message>
</context>
<context>
    <name>ProfilesFolder</name>
    <message>
        <source>Profiles are kept in %1</source>
        <translation>Die Profile liegen in %1</translation>
    </message>
    <message>
        <source>Profiles are kept in %1, because %2 cannot be written</source>
        <translation>Die Profile liegen in %1, weil in %2 nicht geschrieben werden kann</translation>
    </message>
</context>
<context>
    <name>QIODevice</name>
    <message>
        <source>Unknown error</source>
        <translation>Unbekannter Fehler</translation>
    </message>
</context>
<context>
    <name>SaveFile</name>
    <message>
        <source>It is not a regular file</source>
        <translation>Es ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>Its permissions cannot be kept: %1</source>
        <translation>Ihre Zugriffsrechte lassen sich nicht erhalten: %1</translation>
    </message>
</context>
<context>
    <name>XmlDocument</name>
    <message>
        <source>The document is larger than 512 MiB</source>
        <translation>Das Dokument ist größer als 512 MiB</translation>
    </message>
    <message>
        <source>The encoding of the document is neither UTF-8 nor UTF-16</source>
        <translation>Die Kodierung des Dokuments ist weder UTF-8 noch UTF-16</translation>
    </message>
    <message>
        <source>The document has a document type, which is not accepted</source>
        <translation>Das Dokument hat einen Dokumenttyp, was nicht zugelassen ist</translation>
    </message>
    <message>
        <source>An element has too many attributes</source>
        <translation>Ein Element hat zu viele Attribute</translation>
    </message>
</context>
<context>
    <name>findTextureDialog</name>
    <message>
        <source>Find Texture</source>
        <translation>Textur suchen</translation>
    </message>
    <message>
        <source>&amp;Select Image</source>
        <translation>&amp;Bild auswählen</translation>
    </message>
    <message>
        <source>&amp;Select Folder</source>
        <translation>&amp;Ordner auswählen</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>No image or folder has been selected</source>
        <translation>Es ist weder ein Bild noch ein Ordner ausgewählt</translation>
    </message>
    <message>
        <source>Also search for images in subfolders</source>
        <translation>Auch nach den Bildern in Unterordnern suchen</translation>
    </message>
    <message>
        <source>End search after finding texture once</source>
        <translation>Suche nach dem ersten Fund einer Textur beenden</translation>
    </message>
    <message>
        <source>Texture formats to search for</source>
        <translation>Texturformate, nach denen gesucht wird</translation>
    </message>
    <message>
        <source>How to handle textures that already are in the current folder</source>
        <translation>Umgang mit Texturen, die schon im aktuellen Ordner stehen</translation>
    </message>
    <message>
        <source>Overwrite entry</source>
        <translation>Eintrag überschreiben</translation>
    </message>
    <message>
        <source>Create new entry</source>
        <translation>Neuen Eintrag anlegen</translation>
    </message>
    <message>
        <source>Do not create entry</source>
        <translation>Keinen Eintrag anlegen</translation>
    </message>
    <message>
        <source>Open Image File</source>
        <translation>Bilddatei öffnen</translation>
    </message>
    <message>
        <source>Image (*.png)</source>
        <translation>Bild (*.png)</translation>
    </message>
    <message>
        <source>Open Directory</source>
        <translation>Verzeichnis öffnen</translation>
    </message>
    <message>
        <source>Image or folder</source>
        <translation>Bild oder Ordner</translation>
    </message>
</context>
<context>
    <name>textureFormats</name>
    <message>
        <source>4 bit per pixel. All channels share value.</source>
        <translation>4 Bit pro Pixel. Alle Kanäle haben denselben Wert.</translation>
    </message>
    <message>
        <source>4 bit per pixel. 3 bit for greyscale channel, 1 bit for alpha channel.</source>
        <translation>4 Bit pro Pixel. 3 Bit für den Graukanal, 1 Bit für den Alphakanal.</translation>
    </message>
    <message>
        <source>8 bit per pixel. All channels share value.</source>
        <translation>8 Bit pro Pixel. Alle Kanäle haben denselben Wert.</translation>
    </message>
    <message>
        <source>8 bit per pixel. 4 bit for greyscale channel, 4 bit for alpha channel.</source>
        <translation>8 Bit pro Pixel. 4 Bit für den Graukanal, 4 Bit für den Alphakanal.</translation>
    </message>
    <message>
        <source>16 bit per pixel. 8 bit for greyscale channel, 8 bit for alpha channel.</source>
        <translation>16 Bit pro Pixel. 8 Bit für den Graukanal, 8 Bit für den Alphakanal.</translation>
    </message>
    <message>
        <source>16 bit per pixel. 5 bit per color channel, 1 bit for alpha channel. Also known as rgba16.</source>
        <translation>16 Bit pro Pixel. 5 Bit je Farbkanal, 1 Bit für den Alphakanal. Auch als rgba16 bekannt.</translation>
    </message>
    <message>
        <source>32 bit per pixel. 8 bit per color channel, 8 bit for alpha channel.</source>
        <translation>32 Bit pro Pixel. 8 Bit je Farbkanal, 8 Bit für den Alphakanal.</translation>
    </message>
    <message>
        <source>8 bit per pixel. Uses a rgb5a1 palette.</source>
        <translation>8 Bit pro Pixel. Verwendet eine rgb5a1-Palette.</translation>
    </message>
    <message>
        <source>4 bit per pixel. Uses a rgb5a1 palette.</source>
        <translation>4 Bit pro Pixel. Verwendet eine rgb5a1-Palette.</translation>
    </message>
    <message>
        <source>Uses the JPEG File Interchange Format (JFIF) standard.</source>
        <translation>Entspricht dem Standard JPEG File Interchange Format (JFIF).</translation>
    </message>
    <message>
        <source>Unknown format.</source>
        <translation>Unbekanntes Format.</translation>
    </message>
</context>
</TS>
