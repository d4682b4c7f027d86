/// @file
/// The words of the windows: MARVO_TEXT(id, English, German), a part of app/text_table.h.
// No guard: it is read once for the ids and once for the words.

// Signs that are read from afar.
MARVO_TEXT(windowNoCamera, L"NO CAMERA", L"KEINE KAMERA")
MARVO_TEXT(windowNoSignal, L"NO SIGNAL", L"KEIN SIGNAL")
MARVO_TEXT(windowLive, L"LIVE", L"LIVE")
MARVO_TEXT(windowHeld, L"HELD", L"STEHT")
MARVO_TEXT(windowReplay, L"REPLAY", L"REPLAY")
MARVO_TEXT(windowPlaylist, L"CLIPS", L"CLIPS")
MARVO_TEXT(windowOldRecording, L"OLD RECORDING", L"ALTE AUFNAHME")

// The picture and the timeline.
MARVO_TEXT(windowLooking, L"Looking for the camera …", L"Die Kamera wird gesucht …")
MARVO_TEXT(windowNoDevice,
           L"No camera was found. Connect it, switch it on, and press {0} to try again.\n\nDrop an old "
           L"recording here, or press {1}, to watch it.",
           L"Es wurde keine Kamera gefunden. Bitte anschließen, einschalten und {0} drücken.\n\nEine alte "
           L"Aufnahme lässt sich hierher ziehen oder mit {1} öffnen.")
MARVO_TEXT(windowDevices,
           L"No picture comes from the camera. Found: {0}.\n\nPress {1} to try again, or choose another "
           L"camera in the settings ({2}).",
           L"Von der Kamera kommt kein Bild. Gefunden: {0}.\n\nMit {1} noch einmal versuchen oder in den "
           L"Einstellungen ({2}) eine andere wählen.")
MARVO_TEXT(windowNothingYet, L"Nothing has been recorded yet", L"Noch ist nichts aufgenommen")
MARVO_TEXT(windowField, L"FIELD {0}", L"HALBBILD {0}")
MARVO_TEXT(windowZoom, L"ZOOM {0} x", L"ZOOM {0} x")

// The clips.
MARVO_TEXT(windowClips, L"CLIPS", L"CLIPS")
MARVO_TEXT(
    windowNoClips,
    L"Mark a clip while the action runs: its start, then its end. Or keep the last ten seconds with one key.",
    L"Ein Clip entsteht, während die Szene läuft: erst den Anfang, dann das Ende markieren. Oder die letzten "
    L"zehn Sekunden mit einer Taste behalten.")
MARVO_TEXT(windowFileGone, L"its file is gone", L"die Datei fehlt")

// Questions and buttons.
MARVO_TEXT(windowYes, L"Yes", L"Ja")
MARVO_TEXT(windowNo, L"No", L"Nein")
MARVO_TEXT(windowOk, L"OK", L"OK")
MARVO_TEXT(windowCancel, L"Cancel", L"Abbrechen")
MARVO_TEXT(windowClose, L"Close", L"Schließen")

// Menus.
MARVO_TEXT(windowMenuFile, L"File", L"Datei")
MARVO_TEXT(windowMenuRecording, L"Recording", L"Aufnahme")
MARVO_TEXT(windowMenuReplay, L"Replay", L"Wiedergabe")
MARVO_TEXT(windowMenuSpeed, L"Speed", L"Tempo")
MARVO_TEXT(windowMenuClips, L"Clips", L"Clips")
MARVO_TEXT(windowMenuView, L"View", L"Bild")
MARVO_TEXT(windowMenuHelp, L"Help", L"Hilfe")

// Opening and exporting.
MARVO_TEXT(windowOpenTitle, L"Open a recording", L"Aufnahme öffnen")
MARVO_TEXT(windowRecordings, L"Recordings", L"Aufnahmen")
MARVO_TEXT(windowAllFiles, L"All files", L"Alle Dateien")
MARVO_TEXT(windowExportTitle, L"Export clip", L"Clip exportieren")
MARVO_TEXT(windowExportAvi, L"AVI with sound", L"AVI mit Ton")
MARVO_TEXT(windowExportDv, L"DV as the camera sent it", L"DV, wie die Kamera es gab")
MARVO_TEXT(windowExportPictures, L"Folder of PNG pictures", L"Ordner mit PNG-Bildern")
MARVO_TEXT(windowExportAllTitle, L"Folder for all clips", L"Ordner für alle Clips")
MARVO_TEXT(windowNoClipToExport, L"There is no clip to export.", L"Es gibt keinen Clip zum Exportieren.")
MARVO_TEXT(windowExported, L"{0} has been exported.", L"{0} ist exportiert.")
MARVO_TEXT(windowExportFailed, L"{0} could not be exported: {1}.",
           L"{0} konnte nicht exportiert werden: {1}.")
MARVO_TEXT(windowExportCancelled, L"The export of {0} was cancelled.",
           L"Der Export von {0} wurde abgebrochen.")
MARVO_TEXT(windowTargetIsSource, L"{0} is the recording itself; choose another name.",
           L"{0} ist die Aufnahme selbst; bitte einen anderen Namen wählen.")

// Sound, output, remote hands, settings.
MARVO_TEXT(windowNoSound, L"No sound can be heard: {0}.", L"Es ist kein Ton zu hören: {0}.")
MARVO_TEXT(windowOutputFailed, L"The output window could not be opened.",
           L"Das Ausgabefenster konnte nicht geöffnet werden.")
MARVO_TEXT(windowNoMonitor, L"There is no monitor {0}, only {1}: the output is where there is room.",
           L"Es gibt keinen Monitor {0}, nur {1}: Die Ausgabe ist dort, wo Platz ist.")
MARVO_TEXT(windowOtherCamera, L"{0} is not there: this is {1}.", L"{0} ist nicht da: Das ist {1}.")
MARVO_TEXT(windowPortInUse, L"another program has it", L"ein anderes Programm hat ihn")
MARVO_TEXT(windowPortTaken, L"Port {0} cannot be used for remote hands: {1}.",
           L"Der Port {0} ist für die Fernbedienung nicht zu haben: {1}.")
MARVO_TEXT(windowSettingsLater, L"Camera, frames in memory and deinterlacing count from the next start.",
           L"Kamera, Bilder im Speicher und Zeilenentflechtung gelten ab dem nächsten Start.")
MARVO_TEXT(windowSettingsNotKept, L"The settings could not be written to {0}: {1}.",
           L"Die Einstellungen konnten nicht nach {0} geschrieben werden: {1}.")

// The settings dialog.
MARVO_TEXT(windowSettings, L"Settings", L"Einstellungen")
MARVO_TEXT(windowPageGeneral, L"General", L"Allgemein")
MARVO_TEXT(windowPageKeys, L"Keys", L"Tasten")
MARVO_TEXT(windowFirstCamera, L"the first one found", L"die erste gefundene")
MARVO_TEXT(windowOtherMonitor, L"another than the window's", L"ein anderer als der des Fensters")
MARVO_TEXT(windowSettingCamera, L"Camera", L"Kamera")
MARVO_TEXT(windowSettingFolder, L"Folder for recordings", L"Ordner für Aufnahmen")
MARVO_TEXT(windowSettingFormat, L"Recordings as", L"Aufnahmen als")
MARVO_TEXT(windowSettingRolling, L"Minutes always kept", L"Immer bereite Minuten")
MARVO_TEXT(windowSettingDelay, L"Replay delay, ms", L"Wiedergabe-Verzögerung, ms")
MARVO_TEXT(windowSettingRing, L"Frames in memory", L"Bilder im Speicher")
MARVO_TEXT(windowSettingDeinterlace, L"Deinterlacing", L"Zeilenentflechtung")
MARVO_TEXT(windowSettingBackToLive, L"Live at the end of a replay", L"Am Ende zurück zu Live")
MARVO_TEXT(windowSettingMute, L"Mute at the start", L"Ton am Anfang aus")
MARVO_TEXT(windowSettingMonitor, L"Monitor for the output", L"Monitor der Ausgabe")
MARVO_TEXT(windowSettingLanguage, L"Language", L"Sprache")
MARVO_TEXT(windowSettingPort, L"Remote port (0: off)", L"Fernbedienung, Port (0: aus)")
MARVO_TEXT(windowSettingToken, L"Remote token", L"Fernbedienung, Kennwort")
MARVO_TEXT(windowNumberWanted, L"{0}: a whole number from {1} to {2}.",
           L"{0}: eine ganze Zahl von {1} bis {2}.")
MARVO_TEXT(windowTokenWanted, L"A remote port needs a token.", L"Die Fernbedienung braucht ein Kennwort.")
MARVO_TEXT(windowChangeKey, L"Change key …", L"Taste ändern …")
MARVO_TEXT(windowNoKey, L"No key", L"Keine Taste")
MARVO_TEXT(windowDefaultKey, L"As delivered", L"Wie geliefert")
MARVO_TEXT(windowPressKey, L"Press the new key now.", L"Jetzt die neue Taste drücken.")
MARVO_TEXT(windowHelpTitle, L"Keys", L"Tasten")
