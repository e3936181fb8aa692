#include "ChangeMachine.h"

// clang-format off
const std::vector<CChangeMachine::CRow> CChangeMachine::ROWS = {
    // Inserted first, as the system is when it is enabled.
    {"", "insert lum_gina.dll first", "lum_gina.dll", "lum_gina.dll msgina.dll"},
    {"msgina.dll", "insert lum_gina.dll first", "lum_gina.dll msgina.dll"},
    {"wpnGina.dll PLinkGina.dll qslogon.dll", "insert lum_gina.dll first", "lum_gina.dll wpnGina.dll PLinkGina.dll qslogon.dll"},
    {"wpnGina.dll msgina.dll", "insert lum_gina.dll first, remove lum_gina.dll", "wpnGina.dll msgina.dll"},
    {"msgina.dll", "insert wpnGina.dll first", "wpnGina.dll msgina.dll", nullptr, {"1: wpnGina.dll loads nothing", "2: wpnGina.dll loads nothing", "3: wpnGina.dll loads nothing"}},
    {"msgina.dll", "insert qslogon.dll first", "qslogon.dll msgina.dll", "qslogon.dll"},
    // Before another.
    {"wpnGina.dll msgina.dll", "insert lum_gina.dll before MSGINA.dll", "wpnGina.dll lum_gina.dll msgina.dll"},
    {"wpnGina.dll msgina.dll", "insert PLinkGina.dll before msgina.dll", "wpnGina.dll PLinkGina.dll msgina.dll", nullptr, {"2: PLinkGina.dll loads nothing", "3: PLinkGina.dll loads nothing", "4: PLinkGina.dll loads nothing"}},
    {"wpnGina.dll msgina.dll", "insert PLinkGina.dll before msgina.dll, insert lum_gina.dll first", "lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll"},
    {"lum_gina.dll msgina.dll", "insert rec.dll before lum_gina.dll", "rec.dll lum_gina.dll msgina.dll", nullptr, {"1: rec.dll loads nothing", "2: rec.dll loads nothing", "3: rec.dll loads nothing"}},
    {"lum_gina.dll msgina.dll", "insert wpnGina.dll before PLinkGina.dll", nullptr},
    {"lum_gina.dll msgina.dll", "insert qslogon.dll before msgina.dll", nullptr},
    // Last: a terminator keeps the end to itself.
    {"lum_gina.dll msgina.dll", "insert PLinkGina.dll", "lum_gina.dll PLinkGina.dll msgina.dll", nullptr, {"2: PLinkGina.dll loads nothing", "3: PLinkGina.dll loads nothing", "4: PLinkGina.dll loads nothing"}},
    {"wpnGina.dll msgina.dll", "insert qslogon.dll", "wpnGina.dll qslogon.dll"},
    {"msgina.dll", "insert term.dll", "term.dll"},
    {"", "insert wpnGina.dll, insert kvs_gina.dll", "wpnGina.dll kvs_gina.dll", "wpnGina.dll kvs_gina.dll...", {"2: kvs_gina.dll loads nothing"}},
    {"", "insert wpnGina.dll, insert qslogon.dll", "wpnGina.dll qslogon.dll"},
    {"", "insert x.dll, insert wpnGina.dll", "x.dll wpnGina.dll", "x.dll...", {"1: Winlogon loads x.dll", "2: Winlogon loads x.dll", "3: Winlogon loads x.dll", "4: Winlogon loads x.dll"}},
    // Into an empty chain goes anything; nothing is made up for a GINA without a default.
    {"", "insert kvs_gina.dll first", "kvs_gina.dll", "kvs_gina.dll...", {"1: kvs_gina.dll loads nothing"}},
    {"", "insert x.dll first", "x.dll", "x.dll...", {"1: Winlogon loads x.dll"}},
    // What is there already, is unknown, or comes into a chain that has no end known.
    {"lum_gina.dll msgina.dll", "insert LUM_gina.dll first", nullptr},
    {"lum_gina.dll msgina.dll", "insert x.dll first", nullptr},
    {"lum_gina.dll msgina.dll", "insert bad.dll first", nullptr},
    {"lum_gina.dll msgina.dll", "insert - first", nullptr},
    {"x.dll", "insert lum_gina.dll first", nullptr},
    {"wpnGina.dll wpnGina.dll", "insert lum_gina.dll first", nullptr},

    {"lum_gina.dll msgina.dll", "remove lum_gina.dll", ""},
    {"lum_gina.dll wpnGina.dll msgina.dll", "remove LUM_GINA.dll", "wpnGina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "remove wpnGina.dll", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll qslogon.dll", "remove lum_gina.dll", "qslogon.dll"},
    {"lum_gina.dll wpnGina.dll qslogon.dll", "remove qslogon.dll", "lum_gina.dll wpnGina.dll", "lum_gina.dll wpnGina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "remove msgina.dll", "lum_gina.dll wpnGina.dll", "lum_gina.dll wpnGina.dll msgina.dll"},
    {"wpnGina.dll lum_gina.dll msgina.dll", "remove lum_gina.dll", "wpnGina.dll msgina.dll"},
    {"wpnGina.dll PLinkGina.dll msgina.dll", "remove PLinkGina.dll", "wpnGina.dll msgina.dll"},
    {"wpnGina.dll PLinkGina.dll msgina.dll", "remove wpnGina.dll", "PLinkGina.dll msgina.dll"},
    {"wpnGina.dll msgina.dll", "remove wpnGina.dll", ""},
    {"msgina.dll", "remove msgina.dll", ""},
    {"msgina.dll", "remove wpnGina.dll", nullptr},
    {"lum_gina.dll msgina.dll", "remove y.dll", nullptr},
    {"", "remove lum_gina.dll", nullptr},
    {"lum_gina.dll x.dll", "remove lum_gina.dll", nullptr},
    {"lum_gina.dll msgina.dll", "remove -", nullptr},
    {"", "insert x.dll first, remove x.dll", nullptr},

    // The host knows no end of its chain, or the registry's breaks off.
    {"x.dll", "resync Winlogon=msgina.dll", "x.dll...", "msgina.dll"},
    {"", "resync Winlogon=x.dll", ""},
    {"lum_gina.dll msgina.dll", "resync Winlogon=x.dll", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync wpnGina.dll=", "lum_gina.dll msgina.dll", nullptr, {"1: wpnGina.dll loads nothing"}},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync lum_gina.dll=", "lum_gina.dll wpnGina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync wpnGina.dll=lum_gina.dll", "lum_gina.dll msgina.dll", nullptr, {"1: wpnGina.dll loads lum_gina.dll"}},
    {"lum_gina.dll msgina.dll", "resync Winlogon=PLinkGina.dll PLinkGina.dll=", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll rec.dll msgina.dll", "record rec.dll=none, resync", "lum_gina.dll rec.dll msgina.dll", "lum_gina.dll rec.dll..."},

    // It has grown: by what passes by the host, by something incompatible, by what the host stays behind.
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync Winlogon=PLinkGina.dll PLinkGina.dll=wpnGina.dll", "lum_gina.dll wpnGina.dll msgina.dll"},
    {"msgina.dll", "resync Winlogon=wpnGina.dll wpnGina.dll=msgina.dll", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll msgina.dll", "resync Winlogon=wpnGina.dll wpnGina.dll=PLinkGina.dll PLinkGina.dll=msgina.dll", "lum_gina.dll lum_gina.dll msgina.dll", "lum_gina.dll msgina.dll"},
    {"wpnGina.dll lum_gina.dll msgina.dll", "resync Winlogon=PLinkGina.dll PLinkGina.dll=kvs_gina.dll kvs_gina.dll=rec.dll rec.dll=msgina.dll wpnGina.dll=", "lum_gina.dll wpnGina.dll lum_gina.dll msgina.dll", "lum_gina.dll msgina.dll", {"2: wpnGina.dll loads nothing", "3: wpnGina.dll loads lum_gina.dll"}},
    {"lum_gina.dll msgina.dll", "resync Winlogon=inc.dll inc.dll=lum_gina.dll", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll msgina.dll", "resync Winlogon=wpnGina.dll wpnGina.dll=lum_gina.dll", "wpnGina.dll lum_gina.dll msgina.dll"},
    {"lum_gina.dll msgina.dll", "resync Winlogon=LUM_GINA.DLL lum_gina.dll=wpnGina.dll wpnGina.dll=msgina.dll", "LUM_GINA.DLL wpnGina.dll msgina.dll"},
    {"lum_gina.dll msgina.dll", "resync lum_gina.dll=wpnGina.dll wpnGina.dll=inc.dll inc.dll=msgina.dll", "lum_gina.dll wpnGina.dll inc.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "remove msgina.dll, resync", "lum_gina.dll wpnGina.dll msgina.dll"},
    {"lum_gina.dll msgina.dll", "resync Winlogon=rec.dll rec.dll=lum_gina.dll, remove rec.dll", "lum_gina.dll msgina.dll"},

    // It has shrunk with the host in it, or been cut off before the host.
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync lum_gina.dll=msgina.dll", "lum_gina.dll wpnGina.dll msgina.dll", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync Winlogon=wpnGina.dll", "lum_gina.dll wpnGina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync Winlogon=msgina.dll wpnGina.dll=", "lum_gina.dll msgina.dll", nullptr, {"1: wpnGina.dll loads nothing", "2: wpnGina.dll loads nothing"}},
    {"wpnGina.dll lum_gina.dll msgina.dll", "resync Winlogon=msgina.dll wpnGina.dll=", "lum_gina.dll msgina.dll", nullptr, {"1: Winlogon loads wpnGina.dll"}, {"wpnGina.dll"}},
    {"wpnGina.dll msgina.dll", "resync Winlogon=msgina.dll wpnGina.dll=", "msgina.dll", nullptr, {"1: Winlogon loads wpnGina.dll"}, {"wpnGina.dll"}},
    {"wpnGina.dll lum_gina.dll msgina.dll", "resync Winlogon=msgina.dll", "wpnGina.dll lum_gina.dll msgina.dll", nullptr, {"1: Winlogon loads wpnGina.dll", "2: Winlogon loads wpnGina.dll", "3: Winlogon loads wpnGina.dll", "4: Winlogon loads wpnGina.dll"}, {"wpnGina.dll"}},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync Winlogon=msgina.dll", "lum_gina.dll wpnGina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync Winlogon=qslogon.dll", "lum_gina.dll wpnGina.dll qslogon.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "remove msgina.dll, resync Winlogon=qslogon.dll", "lum_gina.dll wpnGina.dll qslogon.dll"},
    {"lum_gina.dll msgina.dll", "resync Winlogon=incterm.dll", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll turned.dll msgina.dll", "record turned.dll=msgina.dll,1,0,0,0, resync Winlogon=turned.dll", "lum_gina.dll turned.dll turned.dll msgina.dll", "lum_gina.dll turned.dll", {"4: turned.dll loads turned.dll"}},
    // As many records as the host has learned, though another one.
    {"rec.dll lum_gina.dll msgina.dll", "resync Winlogon=term.dll", "rec.dll lum_gina.dll msgina.dll"},
    {"rec.dll lum_gina.dll msgina.dll", "resync Winlogon=lum_gina.dll lum_gina.dll=wpnGina.dll wpnGina.dll=PLinkGina.dll PLinkGina.dll=term.dll, resync Winlogon=qslogon.dll", "lum_gina.dll wpnGina.dll PLinkGina.dll qslogon.dll"},

    // It is as long as before.
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync Winlogon=LUM_GINA.DLL lum_gina.dll=inc.dll inc.dll=msgina.dll", "lum_gina.dll msgina.dll"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "resync lum_gina.dll=rec.dll rec.dll=msgina.dll", "lum_gina.dll wpnGina.dll msgina.dll", "lum_gina.dll rec.dll msgina.dll"},
    {"lum_gina.dll msgina.dll", "resync Winlogon=wpnGina.dll wpnGina.dll=msgina.dll", "lum_gina.dll msgina.dll"},
    {"wpnGina.dll lum_gina.dll msgina.dll", "resync Winlogon=PLinkGina.dll PLinkGina.dll=kvs_gina.dll kvs_gina.dll=msgina.dll wpnGina.dll=", "wpnGina.dll lum_gina.dll msgina.dll", nullptr, {"1: wpnGina.dll loads nothing"}},
    {"lum_gina.dll msgina.dll", "resync", "lum_gina.dll msgina.dll"},
};
// clang-format on
