#pragma once

#include <string>
#include <string_view>

namespace tarvo::platform::text {

/// Text as the search compares it: without regard to case and to accents, the same in every locale, in composed form.
/// "Élan Straße" becomes "elan strasse". Folding a folded text changes nothing.
///
/// Dropped are the marks that readers of a script may leave out: accents of Latin, Greek, Cyrillic and Bopomofo, points
/// of Hebrew and Arabic. The marks of other scripts (vowel signs of Tamil or Thai, voicing of kana) spell another word
/// and stay. Letters that are no combination ("ø", "ł") stay. Ill-formed UTF-8 becomes U+FFFD. Any thread.
std::string fold(std::string_view text);
/// The same, added to the end of `out`.
void appendFolded(std::string& out, std::string_view text);

}  // namespace tarvo::platform::text
