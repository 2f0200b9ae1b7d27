<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>CompanionStatus</name>
    <message>
        <source>The GNOME Shell companion is on.</source>
        <translation>Der GNOME-Shell-Begleiter ist eingeschaltet.</translation>
    </message>
    <message>
        <source>The GNOME Shell companion is off.</source>
        <translation>Der GNOME-Shell-Begleiter ist ausgeschaltet.</translation>
    </message>
    <message>
        <source>The GNOME Shell companion is installed. Log out and back in, then switch it on here.</source>
        <translation>Der GNOME-Shell-Begleiter ist installiert. Melden Sie sich ab und wieder an und schalten Sie ihn dann hier ein.</translation>
    </message>
    <message>
        <source>The GNOME Shell companion is not installed.</source>
        <translation>Der GNOME-Shell-Begleiter ist nicht installiert.</translation>
    </message>
    <message>
        <source>This version of GNOME Shell cannot run the companion.</source>
        <translation>Diese Version der GNOME Shell kann den Begleiter nicht ausführen.</translation>
    </message>
    <message>
        <source>Turn On</source>
        <translation>Einschalten</translation>
    </message>
    <message>
        <source>With it on, holding the trigger works over every application, and the panel opens in the middle of the screen.</source>
        <translation>Mit ihm wirkt das Halten der Auslösetaste über jeder Anwendung, und das Feld öffnet sich in der Mitte des Bildschirms.</translation>
    </message>
</context>
<context>
    <name>Export</name>
    <message>
        <source>Export Shortcuts</source>
        <translation>Kurzbefehle exportieren</translation>
    </message>
    <message>
        <source>Web page (*.html);;Markdown (*.md)</source>
        <translation>Webseite (*.html);;Markdown (*.md)</translation>
    </message>
</context>
<context>
    <name>GeneralPane</name>
    <message>
        <source>Trigger</source>
        <translation>Auslöser</translation>
    </message>
    <message>
        <source>Hold to peek:</source>
        <translation>Zum Einblenden halten:</translation>
    </message>
    <message>
        <source>Ctrl</source>
        <translation>Ctrl</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Super</source>
        <translation>Super</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>Hold delay:</source>
        <translation>Haltedauer:</translation>
    </message>
    <message>
        <source>Commands</source>
        <translation>Befehle</translation>
    </message>
    <message>
        <source>Show disabled commands</source>
        <translation>Deaktivierte Befehle anzeigen</translation>
    </message>
    <message>
        <source>Show commands without shortcuts</source>
        <translation>Befehle ohne Tastenkürzel anzeigen</translation>
    </message>
    <message>
        <source>Appearance</source>
        <translation>Erscheinungsbild</translation>
    </message>
    <message>
        <source>Glassy background</source>
        <translation>Gläserner Hintergrund</translation>
    </message>
    <message>
        <source>Turn off for a solid, higher-contrast background.</source>
        <translation>Ausschalten für einen deckenden Hintergrund mit höherem Kontrast.</translation>
    </message>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <source>Launch Corvane at login</source>
        <translation>Corvane bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Accessibility:</source>
        <translation>Barrierefreiheit:</translation>
    </message>
    <message>
        <source>Not granted</source>
        <translation>Nicht erteilt</translation>
    </message>
    <message>
        <source>Open Accessibility Settings…</source>
        <translation>Einstellungen zur Barrierefreiheit öffnen…</translation>
    </message>
    <message>
        <source>Corvane reads menus on this computer only. Nothing is sent anywhere.</source>
        <translation>Corvane liest Menüs nur auf diesem Computer. Nichts wird irgendwohin gesendet.</translation>
    </message>
    <message>
        <source>Remember commands I run</source>
        <translation>Ausgeführte Befehle merken</translation>
    </message>
    <message>
        <source>Forget…</source>
        <translation>Vergessen…</translation>
    </message>
    <message>
        <source>Commands you run often and lately come first in search and in a Recent card.</source>
        <translation>Häufig und zuletzt ausgeführte Befehle stehen in der Suche vorne und in einer Karte „Zuletzt“.</translation>
    </message>
    <message>
        <source>Don&apos;t peek in:</source>
        <translation>Nicht einblenden in:</translation>
    </message>
    <message>
        <source>No applications</source>
        <translation>Keine Anwendungen</translation>
    </message>
    <message>
        <source>Remove %1</source>
        <translation>%1 entfernen</translation>
    </message>
    <message>
        <source>Add an application</source>
        <translation>Anwendung hinzufügen</translation>
    </message>
    <message>
        <source>No other application has a window</source>
        <translation>Keine andere Anwendung hat ein Fenster</translation>
    </message>
    <message>
        <source>Holding the trigger does nothing in these applications; the tray&apos;s Peek Current App still works.</source>
        <translation>In diesen Anwendungen bewirkt das Halten der Taste nichts; „Aktuelle Anwendung zeigen“ in der Systemleiste funktioniert weiterhin.</translation>
    </message>
    <message>
        <source>Forget the commands you ran?</source>
        <translation>Ausgeführte Befehle vergessen?</translation>
    </message>
    <message>
        <source>Search and the Recent card no longer know which commands you ran, in any application. Favorites stay.</source>
        <translation>Die Suche und die Karte „Zuletzt“ wissen dann in keiner Anwendung mehr, welche Befehle Sie ausgeführt haben. Favoriten bleiben erhalten.</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>Vergessen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>To peek with a key of your own, bind the command “corvane --peek” in your desktop&apos;s keyboard shortcuts.</source>
        <translation>Um mit einer eigenen Taste einzublenden, legen Sie den Befehl „corvane --peek“ in den Tastenkürzeln Ihres Desktops auf eine Taste.</translation>
    </message>
    <message>
        <source>Read browser menus</source>
        <translation>Browsermenüs lesen</translation>
    </message>
    <message>
        <source>Where the desktop has no global menu, Corvane stands in for one for a moment to read a Chromium-family browser&apos;s menus; a Qt application that starts in that moment shows no menu bar in its window until it restarts.</source>
        <translation>Wo der Desktop kein globales Menü hat, springt Corvane kurz dafür ein, um die Menüs eines Chromium-Browsers zu lesen; eine Qt-Anwendung, die genau dann startet, zeigt in ihrem Fenster bis zum Neustart keine Menüleiste.</translation>
    </message>
    <message>
        <source>Peek Current App</source>
        <translation>Aktuelle Anwendung zeigen</translation>
    </message>
    <message>
        <source>Quit Corvane</source>
        <translation>Corvane beenden</translation>
    </message>
    <message>
        <source>This session has no tray: open Corvane again from your applications to come back to these settings.</source>
        <translation>Diese Sitzung hat keinen Infobereich: Öffnen Sie Corvane erneut aus Ihren Anwendungen, um zu diesen Einstellungen zurückzukehren.</translation>
    </message>
</context>
<context>
    <name>KdeActions</name>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Ansicht</translation>
    </message>
    <message>
        <source>Go</source>
        <translation>Gehe zu</translation>
    </message>
    <message>
        <source>Bookmarks</source>
        <translation>Lesezeichen</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Extras</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>Other</source>
        <translation>Weitere</translation>
    </message>
</context>
<context>
    <name>OverlayRoot</name>
    <message>
        <source>Search commands</source>
        <translation>Befehle suchen</translation>
    </message>
    <message>
        <source>Pinned</source>
        <translation>Angeheftet</translation>
    </message>
    <message>
        <source>Reading menus…</source>
        <translation>Menüs werden gelesen…</translation>
    </message>
    <message>
        <source>Favorites</source>
        <translation>Favoriten</translation>
    </message>
    <message>
        <source>Navigate</source>
        <translation>Navigieren</translation>
    </message>
    <message>
        <source>Run</source>
        <translation>Ausführen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Click a command to run it</source>
        <translation>Klicken Sie auf einen Befehl, um ihn auszuführen</translation>
    </message>
    <message>
        <source>Hover a command and click ★ to favorite it</source>
        <translation>Zeigen Sie auf einen Befehl und klicken Sie auf ★, um ihn zu den Favoriten zu legen</translation>
    </message>
    <message>
        <source>Release %1 over this panel to keep it open</source>
        <translation>Lassen Sie %1 über dieser Übersicht los, damit sie offen bleibt</translation>
    </message>
    <message numerus="yes">
        <source>%n command(s)</source>
        <translation>
            <numerusform>%n Befehl</numerusform>
            <numerusform>%n Befehle</numerusform>
        </translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Zuletzt</translation>
    </message>
    <message>
        <source>Export…</source>
        <translation>Exportieren…</translation>
    </message>
</context>
<context>
    <name>ReleaseNotes</name>
    <message>
        <source>Hold %1 and see everything</source>
        <translation>%1 halten und alles sehen</translation>
    </message>
    <message>
        <source>Every menu command and shortcut of the app in front of you, grouped by menu.</source>
        <translation>Jeder Menübefehl und jedes Tastenkürzel der Anwendung im Vordergrund, nach Menüs geordnet.</translation>
    </message>
    <message>
        <source>Pin it and search</source>
        <translation>Anheften und suchen</translation>
    </message>
    <message>
        <source>Release %1 over the panel to keep it open, then type. Return runs the command.</source>
        <translation>Lassen Sie %1 über der Übersicht los, damit sie offen bleibt, und tippen Sie los. Die Eingabetaste führt den Befehl aus.</translation>
    </message>
    <message>
        <source>Star your favorites</source>
        <translation>Favoriten markieren</translation>
    </message>
    <message>
        <source>Star the commands you keep forgetting and they float to the top for that app.</source>
        <translation>Markieren Sie die Befehle, die Sie immer wieder vergessen, mit einem Stern, und sie stehen bei dieser Anwendung ganz oben.</translation>
    </message>
    <message>
        <source>Glassy or solid</source>
        <translation>Gläsern oder deckend</translation>
    </message>
    <message>
        <source>Prefer a solid panel? Switch the material in Settings.</source>
        <translation>Lieber eine deckende Übersicht? Stellen Sie das Material in den Einstellungen um.</translation>
    </message>
    <message>
        <source>Open Settings</source>
        <translation>Einstellungen öffnen</translation>
    </message>
</context>
<context>
    <name>SettingsWindowPresenter</name>
    <message>
        <source>Corvane Settings</source>
        <translation>Corvane-Einstellungen</translation>
    </message>
</context>
<context>
    <name>ShortcutSheet</name>
    <message>
        <source>%1 keyboard shortcuts</source>
        <translation>Tastenkürzel von %1</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>Befehl</translation>
    </message>
    <message>
        <source>Shortcut</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>%1 shortcuts.html</source>
        <translation>%1 Tastenkürzel.html</translation>
    </message>
</context>
<context>
    <name>StarButton</name>
    <message>
        <source>Remove from favorites</source>
        <translation>Aus den Favoriten entfernen</translation>
    </message>
    <message>
        <source>Add to favorites</source>
        <translation>Zu den Favoriten hinzufügen</translation>
    </message>
</context>
<context>
    <name>UpdateChecker</name>
    <message>
        <source>Couldn&apos;t check for updates.</source>
        <translation>Die Suche nach Aktualisierungen ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Try again in a minute, or grab the newest version at %1.</source>
        <translation>Versuchen Sie es in einer Minute erneut oder holen Sie sich die neueste Version unter %1.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Version %1 is available.</source>
        <translation>Version %1 ist verfügbar.</translation>
    </message>
    <message>
        <source>You have %1. The update is a quick download from %2.</source>
        <translation>Sie haben Version %1. Die Aktualisierung ist schnell von %2 heruntergeladen.</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Herunterladen</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Später</translation>
    </message>
    <message>
        <source>You&apos;re up to date.</source>
        <translation>Sie sind auf dem neuesten Stand.</translation>
    </message>
    <message>
        <source>Corvane %1 is the latest version.</source>
        <translation>Corvane %1 ist die neueste Version.</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>Softwareaktualisierung</translation>
    </message>
</context>
<context>
    <name>WelcomeView</name>
    <message>
        <source>Welcome to Corvane</source>
        <translation>Willkommen bei Corvane</translation>
    </message>
    <message>
        <source>Every menu command and shortcut of the app you&apos;re using — one held key away.</source>
        <translation>Jeder Menübefehl und jedes Tastenkürzel der Anwendung, die Sie gerade nutzen – nur eine gehaltene Taste entfernt.</translation>
    </message>
    <message>
        <source>Hold %1 for a moment — the overlay appears. Release — it&apos;s gone.</source>
        <translation>Halten Sie %1 einen Moment – die Übersicht erscheint. Loslassen – sie ist weg.</translation>
    </message>
    <message>
        <source>Release %1 over the panel to pin it: search, arrow around, hit ↩ to run any menu command.</source>
        <translation>Lassen Sie %1 über der Übersicht los, um sie anzuheften: suchen, mit den Pfeiltasten wählen, mit ↩ jeden Menübefehl ausführen.</translation>
    </message>
    <message>
        <source>Star the commands you keep forgetting — they float to the top for that app.</source>
        <translation>Markieren Sie die Befehle, die Sie immer wieder vergessen – sie stehen bei dieser Anwendung ganz oben.</translation>
    </message>
    <message>
        <source>This session does not let Corvane watch held keys, so holding %1 does nothing here; choose &quot;Peek Current App&quot; in Corvane&apos;s tray menu instead.</source>
        <translation>Diese Sitzung lässt Corvane keine gehaltenen Tasten beobachten, daher bewirkt das Halten von %1 hier nichts; wählen Sie stattdessen „Aktuelle Anwendung zeigen“ im Menü von Corvane in der Systemleiste.</translation>
    </message>
    <message>
        <source>Accessibility access granted — you&apos;re all set.</source>
        <translation>Zugriff auf die Barrierefreiheit erteilt – alles bereit.</translation>
    </message>
    <message>
        <source>Corvane needs Accessibility access to read menus.</source>
        <translation>Corvane braucht Zugriff auf die Barrierefreiheit, um Menüs zu lesen.</translation>
    </message>
    <message>
        <source>Grant Accessibility Access…</source>
        <translation>Zugriff auf die Barrierefreiheit erteilen…</translation>
    </message>
    <message>
        <source>Open Accessibility Settings…</source>
        <translation>Einstellungen zur Barrierefreiheit öffnen…</translation>
    </message>
    <message>
        <source>Start Peeking</source>
        <translation>Loslegen</translation>
    </message>
    <message>
        <source>I&apos;ll grant it later</source>
        <translation>Später erteilen</translation>
    </message>
    <message>
        <source>This switches on the desktop&apos;s accessibility support for every application. Applications that were already running may need a restart before Corvane can read their menus.</source>
        <translation>Damit wird die Barrierefreiheit des Desktops für alle Anwendungen eingeschaltet. Anwendungen, die schon liefen, müssen eventuell neu gestartet werden, bevor Corvane ihre Menüs lesen kann.</translation>
    </message>
    <message>
        <source>Why does Corvane need this?</source>
        <translation>Wozu braucht Corvane das?</translation>
    </message>
    <message>
        <source>Corvane reads menus on this computer only. Nothing is sent anywhere.</source>
        <translation>Corvane liest Menüs nur auf diesem Computer. Nichts wird irgendwohin gesendet.</translation>
    </message>
    <message>
        <source>This session has no tray: to reach Corvane&apos;s settings later, open Corvane again from your applications.</source>
        <translation>Diese Sitzung hat keinen Infobereich: Um später zu den Einstellungen von Corvane zu gelangen, öffnen Sie Corvane erneut aus Ihren Anwendungen.</translation>
    </message>
</context>
<context>
    <name>WelcomeWindowController</name>
    <message>
        <source>Welcome to Corvane</source>
        <translation>Willkommen bei Corvane</translation>
    </message>
</context>
<context>
    <name>WhatsNewView</name>
    <message>
        <source>What&apos;s New in Corvane</source>
        <translation>Neu in Corvane</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
</context>
<context>
    <name>WhatsNewWindowController</name>
    <message>
        <source>What&apos;s New in Corvane</source>
        <translation>Neu in Corvane</translation>
    </message>
</context>
<context>
    <name>WindowSurface</name>
    <message>
        <source>Minimize</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>corvane::AppDelegate</name>
    <message>
        <source>Saved to %1</source>
        <translation>Gespeichert unter %1</translation>
    </message>
    <message>
        <source>Could not save %1: %2</source>
        <translation>%1 konnte nicht gespeichert werden: %2</translation>
    </message>
</context>
<context>
    <name>corvane::GeneralPaneModel</name>
    <message>
        <source>%.2f s</source>
        <translation>%.2f s</translation>
    </message>
</context>
<context>
    <name>corvane::OverlayLists</name>
    <message>
        <source>Favorites</source>
        <translation>Favoriten</translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Zuletzt</translation>
    </message>
</context>
<context>
    <name>corvane::OverlayViewModel</name>
    <message>
        <source>%1 is not on the accessibility bus: if it was started before accessibility was switched on, quit and reopen it.</source>
        <translation>%1 ist nicht am Barrierefreiheits-Bus: Wurde es gestartet, bevor die Barrierefreiheit eingeschaltet war, beenden Sie es und öffnen Sie es erneut.</translation>
    </message>
    <message>
        <source>%1 started without accessibility: quit and reopen it to see its menus.</source>
        <translation>%1 wurde ohne Barrierefreiheit gestartet: Beenden Sie es und öffnen Sie es erneut, um seine Menüs zu sehen.</translation>
    </message>
</context>
<context>
    <name>corvane::StatusMenuController</name>
    <message>
        <source>Accessibility access needed — click to fix</source>
        <translation>Zugriff auf die Barrierefreiheit nötig – zum Beheben klicken</translation>
    </message>
    <message>
        <source>Peek Current App</source>
        <translation>Aktuelle Anwendung zeigen</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Einstellungen…</translation>
    </message>
    <message>
        <source>Welcome to Corvane…</source>
        <translation>Willkommen bei Corvane…</translation>
    </message>
    <message>
        <source>What&apos;s New in Corvane…</source>
        <translation>Neu in Corvane…</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Nach Aktualisierungen suchen…</translation>
    </message>
    <message>
        <source>Quit Corvane</source>
        <translation>Corvane beenden</translation>
    </message>
    <message>
        <source>Hold-to-peek is off</source>
        <translation>Halten zum Einblenden ist aus</translation>
    </message>
    <message>
        <source>Hold %1 to peek at any app&apos;s shortcuts</source>
        <translation>Halten Sie %1, um die Tastenkürzel jeder Anwendung zu sehen</translation>
    </message>
</context>
</TS>
