<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr">
<context>
    <name>CompanionStatus</name>
    <message>
        <source>The GNOME Shell companion is on.</source>
        <translation>Le compagnon GNOME Shell est activé.</translation>
    </message>
    <message>
        <source>The GNOME Shell companion is off.</source>
        <translation>Le compagnon GNOME Shell est désactivé.</translation>
    </message>
    <message>
        <source>The GNOME Shell companion is installed. Log out and back in, then switch it on here.</source>
        <translation>Le compagnon GNOME Shell est installé. Fermez la session et rouvrez-la, puis activez-le ici.</translation>
    </message>
    <message>
        <source>The GNOME Shell companion is not installed.</source>
        <translation>Le compagnon GNOME Shell n’est pas installé.</translation>
    </message>
    <message>
        <source>This version of GNOME Shell cannot run the companion.</source>
        <translation>Cette version de GNOME Shell ne peut pas exécuter le compagnon.</translation>
    </message>
    <message>
        <source>Turn On</source>
        <translation>Activer</translation>
    </message>
    <message>
        <source>With it on, holding the trigger works over every application, and the panel opens in the middle of the screen.</source>
        <translation>Avec lui, maintenir la touche de déclenchement fonctionne au-dessus de toute application, et le panneau s’ouvre au milieu de l’écran.</translation>
    </message>
</context>
<context>
    <name>Export</name>
    <message>
        <source>Export Shortcuts</source>
        <translation>Exporter les raccourcis</translation>
    </message>
    <message>
        <source>Web page (*.html);;Markdown (*.md)</source>
        <translation>Page web (*.html);;Markdown (*.md)</translation>
    </message>
</context>
<context>
    <name>GeneralPane</name>
    <message>
        <source>Trigger</source>
        <translation>Déclencheur</translation>
    </message>
    <message>
        <source>Hold to peek:</source>
        <translation>Maintenir pour afficher&#xa0;:</translation>
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
        <translation>Désactivé</translation>
    </message>
    <message>
        <source>Hold delay:</source>
        <translation>Délai de maintien&#xa0;:</translation>
    </message>
    <message>
        <source>Commands</source>
        <translation>Commandes</translation>
    </message>
    <message>
        <source>Show disabled commands</source>
        <translation>Afficher les commandes désactivées</translation>
    </message>
    <message>
        <source>Show commands without shortcuts</source>
        <translation>Afficher les commandes sans raccourci</translation>
    </message>
    <message>
        <source>Appearance</source>
        <translation>Apparence</translation>
    </message>
    <message>
        <source>Glassy background</source>
        <translation>Arrière-plan translucide</translation>
    </message>
    <message>
        <source>Turn off for a solid, higher-contrast background.</source>
        <translation>Désactivez-le pour un arrière-plan opaque et plus contrasté.</translation>
    </message>
    <message>
        <source>System</source>
        <translation>Système</translation>
    </message>
    <message>
        <source>Launch Corvane at login</source>
        <translation>Lancer Corvane à l’ouverture de session</translation>
    </message>
    <message>
        <source>Accessibility:</source>
        <translation>Accessibilité&#xa0;:</translation>
    </message>
    <message>
        <source>Not granted</source>
        <translation>Non accordée</translation>
    </message>
    <message>
        <source>Open Accessibility Settings…</source>
        <translation>Ouvrir les paramètres d’accessibilité…</translation>
    </message>
    <message>
        <source>Corvane reads menus on this computer only. Nothing is sent anywhere.</source>
        <translation>Corvane lit les menus sur cet ordinateur uniquement. Rien n’est envoyé nulle part.</translation>
    </message>
    <message>
        <source>Remember commands I run</source>
        <translation>Mémoriser les commandes exécutées</translation>
    </message>
    <message>
        <source>Forget…</source>
        <translation>Oublier…</translation>
    </message>
    <message>
        <source>Commands you run often and lately come first in search and in a Recent card.</source>
        <translation>Les commandes exécutées souvent et récemment passent en tête de la recherche et dans une carte «&#xa0;Récentes&#xa0;».</translation>
    </message>
    <message>
        <source>Don&apos;t peek in:</source>
        <translation>Ne pas afficher dans&#xa0;:</translation>
    </message>
    <message>
        <source>No applications</source>
        <translation>Aucune application</translation>
    </message>
    <message>
        <source>Remove %1</source>
        <translation>Retirer %1</translation>
    </message>
    <message>
        <source>Add an application</source>
        <translation>Ajouter une application</translation>
    </message>
    <message>
        <source>No other application has a window</source>
        <translation>Aucune autre application n’a de fenêtre</translation>
    </message>
    <message>
        <source>Holding the trigger does nothing in these applications; the tray&apos;s Peek Current App still works.</source>
        <translation>Maintenir la touche n’a aucun effet dans ces applications&#xa0;; «&#xa0;Aperçu de l’application active&#xa0;» de la zone de notification fonctionne toujours.</translation>
    </message>
    <message>
        <source>Forget the commands you ran?</source>
        <translation>Oublier les commandes exécutées&#xa0;?</translation>
    </message>
    <message>
        <source>Search and the Recent card no longer know which commands you ran, in any application. Favorites stay.</source>
        <translation>La recherche et la carte «&#xa0;Récentes&#xa0;» ne sauront plus quelles commandes vous avez exécutées, dans aucune application. Les favoris restent.</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>Oublier</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
    <message>
        <source>To peek with a key of your own, bind the command “corvane --peek” in your desktop&apos;s keyboard shortcuts.</source>
        <translation>Pour afficher avec une touche de votre choix, associez la commande «&#xa0;corvane --peek&#xa0;» à un raccourci clavier de votre bureau.</translation>
    </message>
    <message>
        <source>Read browser menus</source>
        <translation>Lire les menus des navigateurs</translation>
    </message>
    <message>
        <source>Where the desktop has no global menu, Corvane stands in for one for a moment to read a Chromium-family browser&apos;s menus; a Qt application that starts in that moment shows no menu bar in its window until it restarts.</source>
        <translation>Là où le bureau n&apos;a pas de menu global, Corvane en tient lieu un instant pour lire les menus d&apos;un navigateur de la famille Chromium ; une application Qt qui démarre à cet instant n&apos;affiche plus de barre de menus dans sa fenêtre jusqu&apos;à son redémarrage.</translation>
    </message>
    <message>
        <source>Peek Current App</source>
        <translation>Aperçu de l’application active</translation>
    </message>
    <message>
        <source>Quit Corvane</source>
        <translation>Quitter Corvane</translation>
    </message>
    <message>
        <source>This session has no tray: open Corvane again from your applications to come back to these settings.</source>
        <translation>Cette session n’a pas de zone de notification : rouvrez Corvane depuis vos applications pour revenir à ces réglages.</translation>
    </message>
</context>
<context>
    <name>KdeActions</name>
    <message>
        <source>File</source>
        <translation>Fichier</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Édition</translation>
    </message>
    <message>
        <source>View</source>
        <translation>Affichage</translation>
    </message>
    <message>
        <source>Go</source>
        <translation>Aller à</translation>
    </message>
    <message>
        <source>Bookmarks</source>
        <translation>Signets</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Outils</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Configuration</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenêtre</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Aide</translation>
    </message>
    <message>
        <source>Other</source>
        <translation>Autres</translation>
    </message>
</context>
<context>
    <name>OverlayRoot</name>
    <message>
        <source>Search commands</source>
        <translation>Rechercher des commandes</translation>
    </message>
    <message>
        <source>Pinned</source>
        <translation>Épinglé</translation>
    </message>
    <message>
        <source>Reading menus…</source>
        <translation>Lecture des menus…</translation>
    </message>
    <message>
        <source>Favorites</source>
        <translation>Favoris</translation>
    </message>
    <message>
        <source>Navigate</source>
        <translation>Naviguer</translation>
    </message>
    <message>
        <source>Run</source>
        <translation>Exécuter</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
    <message>
        <source>Click a command to run it</source>
        <translation>Cliquez sur une commande pour l’exécuter</translation>
    </message>
    <message>
        <source>Hover a command and click ★ to favorite it</source>
        <translation>Survolez une commande et cliquez sur ★ pour l’ajouter aux favoris</translation>
    </message>
    <message>
        <source>Release %1 over this panel to keep it open</source>
        <translation>Relâchez %1 au-dessus de ce panneau pour le garder ouvert</translation>
    </message>
    <message numerus="yes">
        <source>%n command(s)</source>
        <translation>
            <numerusform>%n commande</numerusform>
            <numerusform>%n commandes</numerusform>
        </translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Récentes</translation>
    </message>
    <message>
        <source>Export…</source>
        <translation>Exporter…</translation>
    </message>
</context>
<context>
    <name>ReleaseNotes</name>
    <message>
        <source>Hold %1 and see everything</source>
        <translation>Maintenez %1 et voyez tout</translation>
    </message>
    <message>
        <source>Every menu command and shortcut of the app in front of you, grouped by menu.</source>
        <translation>Chaque commande de menu et chaque raccourci de l’application au premier plan, groupés par menu.</translation>
    </message>
    <message>
        <source>Pin it and search</source>
        <translation>Épinglez et cherchez</translation>
    </message>
    <message>
        <source>Release %1 over the panel to keep it open, then type. Return runs the command.</source>
        <translation>Relâchez %1 au-dessus du panneau pour le garder ouvert, puis tapez. Entrée exécute la commande.</translation>
    </message>
    <message>
        <source>Star your favorites</source>
        <translation>Marquez vos favoris</translation>
    </message>
    <message>
        <source>Star the commands you keep forgetting and they float to the top for that app.</source>
        <translation>Ajoutez une étoile aux commandes que vous oubliez sans cesse et elles remontent en tête pour cette application.</translation>
    </message>
    <message>
        <source>Glassy or solid</source>
        <translation>Translucide ou opaque</translation>
    </message>
    <message>
        <source>Prefer a solid panel? Switch the material in Settings.</source>
        <translation>Vous préférez un panneau opaque&#xa0;? Changez de matière dans les réglages.</translation>
    </message>
    <message>
        <source>Open Settings</source>
        <translation>Ouvrir les réglages</translation>
    </message>
</context>
<context>
    <name>SettingsWindowPresenter</name>
    <message>
        <source>Corvane Settings</source>
        <translation>Réglages de Corvane</translation>
    </message>
</context>
<context>
    <name>ShortcutSheet</name>
    <message>
        <source>%1 keyboard shortcuts</source>
        <translation>Raccourcis clavier de %1</translation>
    </message>
    <message>
        <source>Command</source>
        <translation>Commande</translation>
    </message>
    <message>
        <source>Shortcut</source>
        <translation>Raccourci</translation>
    </message>
    <message>
        <source>%1 shortcuts.html</source>
        <translation>Raccourcis %1.html</translation>
    </message>
</context>
<context>
    <name>StarButton</name>
    <message>
        <source>Remove from favorites</source>
        <translation>Retirer des favoris</translation>
    </message>
    <message>
        <source>Add to favorites</source>
        <translation>Ajouter aux favoris</translation>
    </message>
</context>
<context>
    <name>UpdateChecker</name>
    <message>
        <source>Couldn&apos;t check for updates.</source>
        <translation>Impossible de rechercher les mises à jour.</translation>
    </message>
    <message>
        <source>Try again in a minute, or grab the newest version at %1.</source>
        <translation>Réessayez dans une minute, ou téléchargez la dernière version sur %1.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Version %1 is available.</source>
        <translation>La version %1 est disponible.</translation>
    </message>
    <message>
        <source>You have %1. The update is a quick download from %2.</source>
        <translation>Vous avez la version %1. La mise à jour se télécharge rapidement depuis %2.</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Télécharger</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Plus tard</translation>
    </message>
    <message>
        <source>You&apos;re up to date.</source>
        <translation>Vous êtes à jour.</translation>
    </message>
    <message>
        <source>Corvane %1 is the latest version.</source>
        <translation>Corvane %1 est la dernière version.</translation>
    </message>
    <message>
        <source>Software Update</source>
        <translation>Mise à jour du logiciel</translation>
    </message>
</context>
<context>
    <name>WelcomeView</name>
    <message>
        <source>Welcome to Corvane</source>
        <translation>Bienvenue dans Corvane</translation>
    </message>
    <message>
        <source>Every menu command and shortcut of the app you&apos;re using — one held key away.</source>
        <translation>Chaque commande de menu et chaque raccourci de l’application que vous utilisez, à une touche maintenue près.</translation>
    </message>
    <message>
        <source>Hold %1 for a moment — the overlay appears. Release — it&apos;s gone.</source>
        <translation>Maintenez %1 un instant&#xa0;: la vue d’ensemble apparaît. Relâchez&#xa0;: elle disparaît.</translation>
    </message>
    <message>
        <source>Release %1 over the panel to pin it: search, arrow around, hit ↩ to run any menu command.</source>
        <translation>Relâchez %1 au-dessus du panneau pour l’épingler&#xa0;: cherchez, naviguez avec les flèches, appuyez sur ↩ pour exécuter n’importe quelle commande.</translation>
    </message>
    <message>
        <source>Star the commands you keep forgetting — they float to the top for that app.</source>
        <translation>Ajoutez une étoile aux commandes que vous oubliez sans cesse&#xa0;: elles remontent en tête pour cette application.</translation>
    </message>
    <message>
        <source>This session does not let Corvane watch held keys, so holding %1 does nothing here; choose &quot;Peek Current App&quot; in Corvane&apos;s tray menu instead.</source>
        <translation>Cette session ne permet pas à Corvane de surveiller les touches maintenues&#xa0;: maintenir %1 n’a donc aucun effet ici. Choisissez plutôt «&#xa0;Aperçu de l’application active&#xa0;» dans le menu de Corvane de la zone de notification.</translation>
    </message>
    <message>
        <source>Accessibility access granted — you&apos;re all set.</source>
        <translation>Accès à l’accessibilité accordé&#xa0;: tout est prêt.</translation>
    </message>
    <message>
        <source>Corvane needs Accessibility access to read menus.</source>
        <translation>Corvane a besoin de l’accès à l’accessibilité pour lire les menus.</translation>
    </message>
    <message>
        <source>Grant Accessibility Access…</source>
        <translation>Accorder l’accès à l’accessibilité…</translation>
    </message>
    <message>
        <source>Open Accessibility Settings…</source>
        <translation>Ouvrir les paramètres d’accessibilité…</translation>
    </message>
    <message>
        <source>Start Peeking</source>
        <translation>Commencer</translation>
    </message>
    <message>
        <source>I&apos;ll grant it later</source>
        <translation>Je l’accorderai plus tard</translation>
    </message>
    <message>
        <source>This switches on the desktop&apos;s accessibility support for every application. Applications that were already running may need a restart before Corvane can read their menus.</source>
        <translation>Cela active l’accessibilité du bureau pour toutes les applications. Les applications déjà ouvertes devront peut-être redémarrer avant que Corvane puisse lire leurs menus.</translation>
    </message>
    <message>
        <source>Why does Corvane need this?</source>
        <translation>Pourquoi Corvane en a-t-il besoin&#xa0;?</translation>
    </message>
    <message>
        <source>Corvane reads menus on this computer only. Nothing is sent anywhere.</source>
        <translation>Corvane lit les menus sur cet ordinateur uniquement. Rien n’est envoyé nulle part.</translation>
    </message>
    <message>
        <source>This session has no tray: to reach Corvane&apos;s settings later, open Corvane again from your applications.</source>
        <translation>Cette session n’a pas de zone de notification : pour retrouver plus tard les réglages de Corvane, rouvrez Corvane depuis vos applications.</translation>
    </message>
</context>
<context>
    <name>WelcomeWindowController</name>
    <message>
        <source>Welcome to Corvane</source>
        <translation>Bienvenue dans Corvane</translation>
    </message>
</context>
<context>
    <name>WhatsNewView</name>
    <message>
        <source>What&apos;s New in Corvane</source>
        <translation>Nouveautés de Corvane</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Continuer</translation>
    </message>
</context>
<context>
    <name>WhatsNewWindowController</name>
    <message>
        <source>What&apos;s New in Corvane</source>
        <translation>Nouveautés de Corvane</translation>
    </message>
</context>
<context>
    <name>WindowSurface</name>
    <message>
        <source>Minimize</source>
        <translation>Réduire</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Fermer</translation>
    </message>
</context>
<context>
    <name>corvane::AppDelegate</name>
    <message>
        <source>Saved to %1</source>
        <translation>Enregistré dans %1</translation>
    </message>
    <message>
        <source>Could not save %1: %2</source>
        <translation>Impossible d’enregistrer %1&#xa0;: %2</translation>
    </message>
</context>
<context>
    <name>corvane::GeneralPaneModel</name>
    <message>
        <source>%.2f s</source>
        <translation>%.2f&#xa0;s</translation>
    </message>
</context>
<context>
    <name>corvane::OverlayLists</name>
    <message>
        <source>Favorites</source>
        <translation>Favoris</translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Récentes</translation>
    </message>
</context>
<context>
    <name>corvane::OverlayViewModel</name>
    <message>
        <source>%1 is not on the accessibility bus: if it was started before accessibility was switched on, quit and reopen it.</source>
        <translation>%1 n’est pas sur le bus d’accessibilité : s’il a été lancé avant l’activation de l’accessibilité, quittez-le et rouvrez-le.</translation>
    </message>
    <message>
        <source>%1 started without accessibility: quit and reopen it to see its menus.</source>
        <translation>%1 a démarré sans l’accessibilité : quittez-le et rouvrez-le pour voir ses menus.</translation>
    </message>
</context>
<context>
    <name>corvane::StatusMenuController</name>
    <message>
        <source>Accessibility access needed — click to fix</source>
        <translation>Accès à l’accessibilité requis&#xa0;: cliquez pour y remédier</translation>
    </message>
    <message>
        <source>Peek Current App</source>
        <translation>Aperçu de l’application active</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Réglages…</translation>
    </message>
    <message>
        <source>Welcome to Corvane…</source>
        <translation>Bienvenue dans Corvane…</translation>
    </message>
    <message>
        <source>What&apos;s New in Corvane…</source>
        <translation>Nouveautés de Corvane…</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Rechercher des mises à jour…</translation>
    </message>
    <message>
        <source>Quit Corvane</source>
        <translation>Quitter Corvane</translation>
    </message>
    <message>
        <source>Hold-to-peek is off</source>
        <translation>Le maintien pour afficher est désactivé</translation>
    </message>
    <message>
        <source>Hold %1 to peek at any app&apos;s shortcuts</source>
        <translation>Maintenez %1 pour voir les raccourcis de n’importe quelle application</translation>
    </message>
</context>
</TS>
