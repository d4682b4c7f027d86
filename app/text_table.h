/// @file
/// The words of the application: MARVO_TEXT(id, English, German), read by app/text.h and app/text.cpp.
// No guard: it is read once for the ids and once for the words. {0}, {1} and so on are places to be filled.

// Commands, as menus and help name them.
MARVO_TEXT(commandLive, L"Back to live", L"Zurück zu Live")
MARVO_TEXT(commandHold, L"Hold", L"Anhalten")
MARVO_TEXT(commandHoldOrGoOn, L"Hold / go on", L"Anhalten / weiter")
MARVO_TEXT(commandStepForward, L"One frame forward", L"Ein Bild vor")
MARVO_TEXT(commandStepBack, L"One frame back", L"Ein Bild zurück")
MARVO_TEXT(commandStepForward10, L"Ten frames forward", L"Zehn Bilder vor")
MARVO_TEXT(commandStepBack10, L"Ten frames back", L"Zehn Bilder zurück")
MARVO_TEXT(commandHome, L"To the start", L"Zum Anfang")
MARVO_TEXT(commandEnd, L"To the end", L"Zum Ende")
MARVO_TEXT(commandGoTo, L"To a frame", L"Zu einem Bild")
MARVO_TEXT(commandPlayForward, L"Play forward, again: faster", L"Vorwärts, nochmals: schneller")
MARVO_TEXT(commandPlayBackward, L"Play backward, again: faster", L"Rückwärts, nochmals: schneller")
MARVO_TEXT(commandSpeed1, L"Speed 0.1", L"Tempo 0,1")
MARVO_TEXT(commandSpeed2, L"Speed 0.2", L"Tempo 0,2")
MARVO_TEXT(commandSpeed3, L"Speed 0.25", L"Tempo 0,25")
MARVO_TEXT(commandSpeed4, L"Speed 0.33", L"Tempo 0,33")
MARVO_TEXT(commandSpeed5, L"Speed 0.5", L"Tempo 0,5")
MARVO_TEXT(commandSpeed6, L"Speed 0.75", L"Tempo 0,75")
MARVO_TEXT(commandSpeed7, L"Speed 1", L"Tempo 1")
MARVO_TEXT(commandSpeed8, L"Speed 2", L"Tempo 2")
MARVO_TEXT(commandSpeed9, L"Speed 4", L"Tempo 4")
MARVO_TEXT(commandReverse, L"Other direction", L"Andere Richtung")
MARVO_TEXT(commandSpeed, L"Any speed", L"Beliebiges Tempo")
MARVO_TEXT(commandAgain5, L"The last 5 seconds again", L"Die letzten 5 Sekunden nochmals")
MARVO_TEXT(commandAgain10, L"The last 10 seconds again", L"Die letzten 10 Sekunden nochmals")
MARVO_TEXT(commandAgain20, L"The last 20 seconds again", L"Die letzten 20 Sekunden nochmals")
MARVO_TEXT(commandAgain, L"The last seconds again", L"Die letzten Sekunden nochmals")
MARVO_TEXT(commandPlayOnce, L"Play once", L"Einmal spielen")
MARVO_TEXT(commandLoop, L"Play in a loop", L"In Schleife spielen")
MARVO_TEXT(commandPingPong, L"Play to and fro", L"Hin und her spielen")
MARVO_TEXT(commandNextPlayMode, L"Once / loop / to and fro", L"Einmal / Schleife / hin und her")
MARVO_TEXT(commandMarkIn, L"Mark the start of a clip", L"Anfang eines Clips markieren")
MARVO_TEXT(commandMarkOut, L"Mark its end: makes the clip", L"Ende markieren: ergibt den Clip")
MARVO_TEXT(commandClearMarks, L"Forget the mark", L"Marke vergessen")
MARVO_TEXT(commandClipOfLast10, L"Clip of the last ten seconds", L"Clip der letzten zehn Sekunden")
MARVO_TEXT(commandNextClip, L"Next clip", L"Nächster Clip")
MARVO_TEXT(commandPreviousClip, L"Previous clip", L"Voriger Clip")
MARVO_TEXT(commandPlayClip, L"Play the clip", L"Clip spielen")
MARVO_TEXT(commandPlayAll, L"Play all clips", L"Alle Clips spielen")
MARVO_TEXT(commandDeleteClip, L"Delete the clip", L"Clip löschen")
MARVO_TEXT(commandUndo, L"Undo", L"Rückgängig")
MARVO_TEXT(commandClipUp, L"Clip up", L"Clip nach oben")
MARVO_TEXT(commandClipDown, L"Clip down", L"Clip nach unten")
MARVO_TEXT(commandRenameClip, L"Rename the clip...", L"Clip umbenennen...")
MARVO_TEXT(commandExportClip, L"Export the clip...", L"Clip exportieren...")
MARVO_TEXT(commandExportAll, L"Export all clips...", L"Alle Clips exportieren...")
MARVO_TEXT(commandRecord, L"Record", L"Aufnehmen")
MARVO_TEXT(commandStop, L"Stop the recording", L"Aufnahme beenden")
MARVO_TEXT(commandOpen, L"Open a recording...", L"Aufnahme öffnen...")
MARVO_TEXT(commandLookForCamera, L"Look for the camera", L"Kamera suchen")
MARVO_TEXT(commandFullScreen, L"Full screen", L"Ganzer Bildschirm")
MARVO_TEXT(commandOutputWindow, L"Window for the audience", L"Fenster für das Publikum")
MARVO_TEXT(commandField, L"Both fields / first / second", L"Beide Halbbilder / erstes / zweites")
MARVO_TEXT(commandZoomIn, L"Larger", L"Größer")
MARVO_TEXT(commandZoomOut, L"Smaller", L"Kleiner")
MARVO_TEXT(commandZoomWhole, L"Whole picture", L"Ganzes Bild")
MARVO_TEXT(commandMute, L"Sound on / off", L"Ton an / aus")
MARVO_TEXT(commandTimeDisplay, L"Time in the picture", L"Zeit im Bild")
MARVO_TEXT(commandSettings, L"Settings...", L"Einstellungen...")
MARVO_TEXT(commandHelp, L"Help", L"Hilfe")
MARVO_TEXT(commandQuit, L"Quit", L"Beenden")
MARVO_TEXT(commandConfirm, L"Yes", L"Ja")
MARVO_TEXT(commandDismiss, L"No / take the message away", L"Nein / Meldung weg")

// Whose picture it is.
MARVO_TEXT(sourceNoCamera, L"NO CAMERA", L"KEINE KAMERA")
MARVO_TEXT(sourceLive, L"LIVE", L"LIVE")
MARVO_TEXT(sourceNoSignal, L"NO SIGNAL", L"KEIN SIGNAL")
MARVO_TEXT(sourceHeld, L"HELD {0}", L"STANDBILD {0}")
MARVO_TEXT(sourceReplay, L"REPLAY {0}", L"WIEDERHOLUNG {0}")
MARVO_TEXT(sourcePlaylist, L"CLIP {0} of {1}: {2}", L"CLIP {0} von {1}: {2}")
MARVO_TEXT(sourceOld, L"OLD RECORDING {0}", L"ALTE AUFNAHME {0}")
MARVO_TEXT(noSignalSince, L"NO SIGNAL since {0} ({1})", L"KEIN SIGNAL seit {0} ({1})")
MARVO_TEXT(speedHeld, L"held", L"steht")
MARVO_TEXT(speedTimes, L"{0} x", L"{0} x")
MARVO_TEXT(modeOnce, L"once", L"einmal")
MARVO_TEXT(modeLoop, L"loop", L"Schleife")
MARVO_TEXT(modePingPong, L"to and fro", L"hin und her")

// The recording.
MARVO_TEXT(recordingOff, L"NOT RECORDING", L"KEINE AUFNAHME")
MARVO_TEXT(recordingRolling, L"ROLLING, the last {0} min are kept", L"LAUFEND, die letzten {0} min bleiben")
MARVO_TEXT(recordingOn, L"REC {0}  {1}", L"AUFNAHME {0}  {1}")
MARVO_TEXT(recordingFailing, L"FAILING  {0}", L"FEHLER  {0}")
MARVO_TEXT(driveLeft, L"{0} left", L"noch {0} Platz")
MARVO_TEXT(alarmFailing, L"{0} cannot be written: {1}. Safe on disk: {2}.",
           L"{0} kann nicht geschrieben werden: {1}. Sicher auf der Platte: {2}.")
MARVO_TEXT(alarmFramesFailed, L"{0}: {1} frames could not be written: {2}.",
           L"{0}: {1} Bilder konnten nicht geschrieben werden: {2}.")
MARVO_TEXT(alarmBehind, L"{0}: the disk is too slow, {1} frames are lost.",
           L"{0}: Die Platte ist zu langsam, {1} Bilder sind verloren.")
MARVO_TEXT(alarmEnded, L"{0} has ended by itself: {1}. Nothing is recorded.",
           L"{0} hat von selbst geendet: {1}. Es wird nicht aufgenommen.")
MARVO_TEXT(alarmNotRecording, L"Nothing is recorded, not even for a replay: {0}.",
           L"Es wird nicht aufgenommen, auch nicht für Wiederholungen: {0}.")
MARVO_TEXT(alarmDrive, L"The drive has room for {0} only.", L"Das Laufwerk hat nur noch Platz für {0}.")
MARVO_TEXT(alarmUnreadable, L"{0}: frame {1} ({2} in all) cannot be read: {3}.",
           L"{0}: Bild {1} ({2} insgesamt) ist nicht lesbar: {3}.")
MARVO_TEXT(alarmPicture, L"The picture is disturbed; recording goes on.",
           L"Das Bild ist gestört; die Aufnahme läuft weiter.")
MARVO_TEXT(alarmClips, L"The clips of {0} are not saved: {1}.",
           L"Die Clips von {0} sind nicht gespeichert: {1}.")
MARVO_TEXT(unknownReason, L"the reason is not known", L"der Grund ist nicht bekannt")

// Messages: transport.
MARVO_TEXT(toldNoPicture, L"There is no picture yet.", L"Es gibt noch kein Bild.")
MARVO_TEXT(toldNothingToShow, L"There is nothing to show: no camera, and no recording is open.",
           L"Es gibt nichts zu zeigen: keine Kamera, und keine Aufnahme ist geöffnet.")
MARVO_TEXT(toldNoCamera,
           L"No camera was found. Connect it, switch it on, and choose \"Look for the camera\".",
           L"Keine Kamera gefunden. Anschließen, einschalten und \"Kamera suchen\" wählen.")
MARVO_TEXT(toldStartFailed, L"The camera could not be started: {0}.",
           L"Die Kamera ließ sich nicht starten: {0}.")
MARVO_TEXT(toldCameraThere, L"The camera is there already.", L"Die Kamera ist schon da.")
MARVO_TEXT(toldCameraFound, L"The camera is there: live.", L"Die Kamera ist da: live.")
MARVO_TEXT(toldCameraReturns, L"A recording runs: it goes on by itself when the camera is back.",
           L"Eine Aufnahme läuft: Sie geht von selbst weiter, wenn die Kamera wieder da ist.")
MARVO_TEXT(toldLive, L"Live.", L"Live.")
MARVO_TEXT(toldLiveAlready, L"This is live already.", L"Das ist schon live.")
MARVO_TEXT(toldHeld, L"Held at {0}.", L"Angehalten bei {0}.")
MARVO_TEXT(toldHeldAlready, L"The picture is held already.", L"Das Bild steht schon.")
MARVO_TEXT(toldSpeedInLive, L"Live has no other speed: hold it, or play the last seconds again.",
           L"Live hat kein anderes Tempo: erst anhalten oder die letzten Sekunden nochmals zeigen.")
MARVO_TEXT(toldForwardInLive, L"Live is the newest picture; nothing lies before it.",
           L"Live ist das neueste Bild; davor liegt nichts.")
MARVO_TEXT(toldFastest, L"It is not played faster than {0}.", L"Schneller als {0} wird nicht gespielt.")
MARVO_TEXT(toldSpeed, L"Speed {0}.", L"Tempo {0}.")
MARVO_TEXT(toldSameSpeed, L"The speed is {0} already.", L"Das Tempo ist schon {0}.")
MARVO_TEXT(toldAtStart, L"This is the first frame that is there.", L"Das ist das erste vorhandene Bild.")
MARVO_TEXT(toldAtEnd, L"This is the newest frame that is there.", L"Das ist das neueste vorhandene Bild.")
MARVO_TEXT(toldEndOfRange, L"The end: held at {0}.", L"Das Ende: angehalten bei {0}.")
MARVO_TEXT(toldEndToLive, L"The end: back to live.", L"Das Ende: zurück zu Live.")
MARVO_TEXT(toldFrameNotOnDisk, L"That frame is not on disk, and not in memory any more.",
           L"Dieses Bild ist nicht auf der Platte und nicht mehr im Speicher.")
MARVO_TEXT(toldAgain, L"The last {0}, from {1}.", L"Die letzten {0}, ab {1}.")
MARVO_TEXT(toldAgainLess, L"Only {0} are there, from {1}.", L"Nur {0} sind da, ab {1}.")
MARVO_TEXT(toldMode, L"Played: {0}.", L"Gespielt wird: {0}.")
MARVO_TEXT(toldModeAlready, L"It is played so already: {0}.", L"So wird schon gespielt: {0}.")
MARVO_TEXT(toldNeedsArgument, L"\"{0}\" needs {1}.", L"\"{0}\" braucht {1}.")
MARVO_TEXT(toldNoQuestion, L"Nothing is asked.", L"Es ist nichts gefragt.")
MARVO_TEXT(toldQuestionOff, L"Nothing was done.", L"Es ist nichts geschehen.")
MARVO_TEXT(toldFieldHeld, L"One field is shown of a held picture only.",
           L"Ein einzelnes Halbbild gibt es nur vom stehenden Bild.")
MARVO_TEXT(toldFieldBoth, L"Both fields.", L"Beide Halbbilder.")
MARVO_TEXT(toldFieldFirst, L"The first field.", L"Das erste Halbbild.")
MARVO_TEXT(toldFieldSecond, L"The second field.", L"Das zweite Halbbild.")
MARVO_TEXT(toldMuted, L"The sound is off.", L"Der Ton ist aus.")
MARVO_TEXT(toldSound, L"The sound is on.", L"Der Ton ist an.")
MARVO_TEXT(toldTimeOn, L"The time is shown.", L"Die Zeit wird gezeigt.")
MARVO_TEXT(toldTimeOff, L"The time is not shown.", L"Die Zeit wird nicht gezeigt.")
MARVO_TEXT(toldCall, L"Marker {0}.", L"Marke {0}.")
MARVO_TEXT(toldCallFailed, L"The marker was not taken: {0}.", L"Die Marke wurde nicht genommen: {0}.")
MARVO_TEXT(toldCommandFailed, L"That cannot be shown: {0}.", L"Das kann nicht gezeigt werden: {0}.")

// Messages: recording and camera.
MARVO_TEXT(toldRecording, L"Recording into {0}.", L"Aufnahme in {0}.")
MARVO_TEXT(toldRecordingAlready, L"{0} is being recorded since {1}; nothing was changed.",
           L"{0} wird seit {1} aufgenommen; nichts wurde geändert.")
MARVO_TEXT(toldRecordFailed, L"{0} cannot be recorded: {1}.", L"{0} kann nicht aufgenommen werden: {1}.")
MARVO_TEXT(toldNotRecording, L"No recording runs; the rolling file goes on.",
           L"Es läuft keine Aufnahme; die laufende Datei geht weiter.")
MARVO_TEXT(toldStopped, L"{0} is complete: {1}.", L"{0} ist fertig: {1}.")
MARVO_TEXT(toldStoppedShort, L"{0} has ended: {1}; {2} frames are missing: {3}.",
           L"{0} ist beendet: {1}; {2} Bilder fehlen: {3}.")
MARVO_TEXT(toldStoppedGone, L"{0} has ended, but it is not in {1} any more: was it moved or deleted?",
           L"{0} ist beendet, liegt aber nicht mehr in {1}: verschoben oder gelöscht?")
MARVO_TEXT(askStop, L"Stop recording {0}? Once more within 3 s, or Y.",
           L"Aufnahme {0} beenden? Nochmals innerhalb 3 s, oder Y.")
MARVO_TEXT(askQuitRecording, L"{0} is being recorded. Stop it and quit? Once more within 3 s, or Y.",
           L"{0} wird aufgenommen. Aufnahme und Programm beenden? Nochmals innerhalb 3 s, oder Y.")
MARVO_TEXT(askQuitBusy, L"An export is running. Cancel it and quit? Once more within 3 s, or Y.",
           L"Ein Export läuft. Abbrechen und beenden? Nochmals innerhalb 3 s, oder Y.")
MARVO_TEXT(askQuit, L"Quit? Once more within 3 s, or Y.",
           L"Programm beenden? Nochmals innerhalb 3 s, oder Y.")
MARVO_TEXT(toldQuit, L"The application ends.", L"Das Programm endet.")
MARVO_TEXT(toldCameraLost, L"The camera is lost. Recording and replay are kept.",
           L"Die Kamera ist weg. Aufnahme und Wiederholung bleiben.")
MARVO_TEXT(toldCameraSilent, L"The camera sends no picture.", L"Die Kamera sendet kein Bild.")
MARVO_TEXT(toldCameraBack, L"The camera is back after {0}; {1} goes on.",
           L"Die Kamera ist nach {0} wieder da; {1} geht weiter.")
MARVO_TEXT(toldCameraChangedGone, L"The camera came back with another format and does not start: {0}.",
           L"Die Kamera kam mit anderem Format wieder und startet nicht: {0}.")
MARVO_TEXT(toldCameraChanged, L"The camera is back with another format: {0} is complete, {1} goes on.",
           L"Die Kamera ist mit anderem Format wieder da: {0} ist fertig, {1} geht weiter.")
MARVO_TEXT(gapOf, L"no picture for {0}", L"{0} ohne Bild")

// Messages: opening.
MARVO_TEXT(toldOpened, L"{0} is open: {1}.", L"{0} ist geöffnet: {1}.")
MARVO_TEXT(toldOpenFailed, L"Nothing was opened: {0}.", L"Nichts wurde geöffnet: {0}.")
MARVO_TEXT(toldTooShort, L"{0} holds no two frames.", L"{0} enthält keine zwei Bilder.")
MARVO_TEXT(toldOtherSystem, L"{0} has frames of {1} bytes, the camera of {2}: open it without the camera.",
           L"{0} hat Bilder zu {1} Byte, die Kamera zu {2}: ohne Kamera öffnen.")
MARVO_TEXT(toldOfThisEvening, L"{0} is of this evening.", L"{0} ist von heute Abend.")

// Messages: clips.
MARVO_TEXT(clipName, L"Clip {0}", L"Clip {0}")
MARVO_TEXT(toldMarkIn, L"Start of a clip: {0}.", L"Anfang eines Clips: {0}.")
MARVO_TEXT(toldNoMark, L"Mark the start of the clip first.", L"Erst den Anfang des Clips markieren.")
MARVO_TEXT(toldMarksCleared, L"The mark at {0} is forgotten.", L"Die Marke bei {0} ist vergessen.")
MARVO_TEXT(toldNoMarks, L"There is no mark.", L"Es gibt keine Marke.")
MARVO_TEXT(toldClip, L"{0}: {1}, from {2}.", L"{0}: {1}, ab {2}.")
MARVO_TEXT(toldClipSplit, L"{0} and {1}: the action lies in two files, so there are {2} clips.",
           L"{0} und {1}: Die Szene liegt in zwei Dateien, also sind es {2} Clips.")
MARVO_TEXT(toldNotRecorded, L"That is in no file, so it cannot be a clip.",
           L"Das steht in keiner Datei und kann kein Clip sein.")
MARVO_TEXT(toldNoClips, L"There are no clips.", L"Es gibt keine Clips.")
MARVO_TEXT(toldNoClipChosen, L"No clip is chosen.", L"Kein Clip ist gewählt.")
MARVO_TEXT(toldNoClipNumber, L"There is no clip {0}; there are {1}.",
           L"Es gibt keinen Clip {0}; es sind {1}.")
MARVO_TEXT(toldClipChosen, L"{0}: {1}.", L"{0}: {1}.")
MARVO_TEXT(toldLastClip, L"This is the last clip.", L"Das ist der letzte Clip.")
MARVO_TEXT(toldFirstClip, L"This is the first clip.", L"Das ist der erste Clip.")
MARVO_TEXT(toldClipGone, L"The file of {0} is not there any more: {1}.",
           L"Die Datei von {0} ist nicht mehr da: {1}.")
MARVO_TEXT(toldPlayAll, L"All clips, {0} of them.", L"Alle {0} Clips.")
MARVO_TEXT(toldClipDeleted, L"{0} is deleted; undo brings it back.",
           L"{0} ist gelöscht; Rückgängig holt ihn zurück.")
MARVO_TEXT(toldClipRenamed, L"It is called {0} now.", L"Er heißt jetzt {0}.")
MARVO_TEXT(toldClipNotRenamed, L"\"{0}\" is no new name for the clip.",
           L"\"{0}\" ist kein neuer Name für den Clip.")
MARVO_TEXT(toldClipMoved, L"{0} is clip {1} of {2} now.", L"{0} ist jetzt Clip {1} von {2}.")
MARVO_TEXT(toldNothingToUndo, L"There is nothing to undo.", L"Es gibt nichts rückgängig zu machen.")
MARVO_TEXT(undoneAdded, L"Undone: the new clip is gone.", L"Rückgängig: Der neue Clip ist weg.")
MARVO_TEXT(undoneRemoved, L"Undone: the clip is back.", L"Rückgängig: Der Clip ist wieder da.")
MARVO_TEXT(undoneRenamed, L"Undone: the clip has its old name.",
           L"Rückgängig: Der Clip heißt wieder wie vorher.")
MARVO_TEXT(undoneMoved, L"Undone: the clip is where it was.",
           L"Rückgängig: Der Clip ist wieder an seinem Platz.")

// Clip files.
MARVO_TEXT(clipFileBeyond, L"{0} ends with frame {1}, but the recording has {2} frames.",
           L"{0} endet mit Bild {1}, aber die Aufnahme hat {2} Bilder.")
MARVO_TEXT(andMore, L"{0} (and {1} more)", L"{0} (und {1} weitere)")
MARVO_TEXT(clipFileUnreadable, L"{0} cannot be read: {1}. It is left as it is.",
           L"{0} ist nicht lesbar: {1}. Sie bleibt, wie sie ist.")
MARVO_TEXT(clipFileOther, L"The clip list names another file, {0}, not {1}. It is left as it is.",
           L"Die Clipliste gehört zu einer anderen Datei, {0}, nicht zu {1}. Sie bleibt, wie sie ist.")
MARVO_TEXT(clipFileNone, L"The clip list has no first line that names its recording. It is left as it is.",
           L"Der Clipliste fehlt die erste Zeile mit ihrer Aufnahme. Sie bleibt, wie sie ist.")
MARVO_TEXT(clipFileLine, L"Line {0} of the clip list is no clip: {1}. It is kept.",
           L"Zeile {0} der Clipliste ist kein Clip: {1}. Sie bleibt stehen.")

// Settings and keys.
MARVO_TEXT(settingsUnreadable, L"{0} cannot be read: {1}. The defaults are used.",
           L"{0} ist nicht lesbar: {1}. Es gelten die Vorgaben.")
MARVO_TEXT(settingsUnknown, L"marvo-replay.ini, line {0}: there is no setting \"{1}\".",
           L"marvo-replay.ini, Zeile {0}: Es gibt keine Einstellung \"{1}\".")
MARVO_TEXT(settingsNoLine, L"marvo-replay.ini, line {0}: \"{1}\" is no setting.",
           L"marvo-replay.ini, Zeile {0}: \"{1}\" ist keine Einstellung.")
MARVO_TEXT(settingsValue, L"marvo-replay.ini, line {0}: {1} = {2} is not {3}; {4} is used.",
           L"marvo-replay.ini, Zeile {0}: {1} = {2} ist nicht {3}; es gilt {4}.")
MARVO_TEXT(settingsKey, L"marvo-replay.ini, line {0}: {1}", L"marvo-replay.ini, Zeile {0}: {1}")
MARVO_TEXT(settingsTwice, L"marvo-replay.ini, line {0}: {1} is set twice; this one counts.",
           L"marvo-replay.ini, Zeile {0}: {1} ist doppelt gesetzt; diese Zeile gilt.")
MARVO_TEXT(rangeOf, L"a whole number from {0} to {1}", L"eine ganze Zahl von {0} bis {1}")
MARVO_TEXT(oneOf, L"one of {0}", L"eines von {0}")
MARVO_TEXT(keyUnknown, L"there is no key \"{0}\".", L"Es gibt keine Taste \"{0}\".")
MARVO_TEXT(keyTaken, L"the key {0} belongs to \"{1}\".", L"Die Taste {0} gehört zu \"{1}\".")

// Arguments of commands.
MARVO_TEXT(argumentFrame, L"a frame number", L"eine Bildnummer")
MARVO_TEXT(argumentSpeed, L"a speed from -4 to 4", L"ein Tempo von -4 bis 4")
MARVO_TEXT(argumentSeconds, L"seconds, 0.2 to 600", L"Sekunden, 0,2 bis 600")
MARVO_TEXT(argumentClip, L"a clip's number, or nothing for the chosen one",
           L"die Nummer eines Clips, oder nichts für den gewählten")
MARVO_TEXT(argumentName, L"a name", L"einen Namen")
MARVO_TEXT(argumentFile, L"a file", L"eine Datei")
MARVO_TEXT(argumentFolder, L"a folder", L"ein Ordner")

#include "app/window/window_text_table.h"
