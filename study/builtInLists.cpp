#include "builtInLists.h"

using namespace Qt::StringLiterals;

QStringList builtInBlockedApps()
{
    return {u"Steam"_s,
            u"Discord"_s,
            u"Telegram"_s,
            u"WhatsApp"_s,
            u"Slack"_s,
            u"Zoom"_s,
            u"Epic Games Launcher"_s,
            u"Battle.net"_s,
            u"EA app"_s,
            u"Origin"_s,
            u"Ubisoft Connect"_s,
            u"GOG Galaxy"_s,
            u"Riot Client"_s,
            u"Roblox"_s,
            u"Minecraft"_s,
            u"League of Legends"_s,
            u"Dota"_s,
            u"Counter-Strike"_s,
            u"Fortnite"_s,
            u"World of Warcraft"_s,
            u"Overwatch"_s,
            u"Valorant"_s,
            u"Genshin Impact"_s,
            u"HoYoPlay"_s,
            u"osu!"_s,
            u"Spotify"_s,
            u"Music"_s};
}

QStringList builtInBlockedDomains()
{
    return {// video hosting: the site, its short links, its embedded player
            u"youtube.com"_s, u"youtu.be"_s, u"youtube-nocookie.com"_s,
            // live streams
            u"twitch.tv"_s, u"kick.com"_s,
            // short videos
            u"tiktok.com"_s,
            // social networks
            u"facebook.com"_s, u"instagram.com"_s, u"x.com"_s, u"threads.com"_s, u"snapchat.com"_s,
            u"tumblr.com"_s, u"vk.com"_s, u"ok.ru"_s,
            // films and series
            u"netflix.com"_s, u"disneyplus.com"_s, u"hulu.com"_s, u"primevideo.com"_s, u"kinopoisk.ru"_s,
            u"ivi.ru"_s,
            // more video hosting
            u"rutube.ru"_s,
            // content feed
            u"dzen.ru"_s,
            // humour and memes
            u"9gag.com"_s, u"pikabu.ru"_s,
            // chat, with its invitation links
            u"discord.com"_s, u"discord.gg"_s,
            // game stores and communities
            u"steampowered.com"_s, u"steamcommunity.com"_s, u"epicgames.com"_s, u"roblox.com"_s,
            // online chess
            u"chess.com"_s, u"lichess.org"_s,
            // music
            u"spotify.com"_s, u"soundcloud.com"_s};
}

QStringList builtInAllowedStudyApps()
{
    return {u"Preview"_s,        u"Books"_s, u"Safari"_s,   u"Google Chrome"_s, u"Brave Browser"_s,
            u"Microsoft Edge"_s, u"Arc"_s,   u"Anki"_s,     u"Obsidian"_s,      u"Notion"_s,
            u"Notes"_s,          u"Pages"_s, u"TextEdit"_s, u"Finder"_s};
}
