#pragma once

/// @file
/// The languages of the login manager.

/// Language of the login manager's user interface: the number of its `langCode`, 0 to 13.
///
/// The deployed login manager defines which language a number means, so the names here carry the number only. A value
/// outside 0 to 13 is sent to the manager as 0.
enum uiLang : int {
    uiLang0 = 0,
    uiLang1 = 1,
    uiLang2 = 2,
    uiLang3 = 3,
    uiLang4 = 4,
    uiLang5 = 5,
    uiLang6 = 6,
    uiLang7 = 7,
    uiLang8 = 8,
    uiLang9 = 9,
    uiLang10 = 10,
    uiLang11 = 11,
    uiLang12 = 12,
    uiLang13 = 13,
    uiLangFallback = uiLang0,  ///< replaces every value out of range
};
