#ifndef TVTEXTSTR_H
#define TVTEXTSTR_H

// Free functions on 8-bit byte strings. Positions are int, counted in
// bytes from 0. Nothing here knows characters beyond ASCII except
// tv_clean_unicode.
//
// Functions taking a const char* check it for null and report through the
// error framework (TVErrC_Assert; a bad start position TVErrC_StringBounds).
// An error throws by default; if the error action is set to continue, a
// function that gives a position gives -1 and one that gives an int gives
// the error value. The std::string forms have no null case.

#include <cstdarg>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

// printf into a byte string.
std::string tv_sprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string tv_vsprintf(const char* format, va_list args);

// ---- Searching and copying ------------------------------------------------

// Position of the first ch / match at or after start, or the length of the
// string when there is none. start may be 0 .. length.
int tv_move_to(const char* source, char ch, int start);
int tv_move_to(const char* source, const char* match, int start);
int tv_move_to(const std::string& source, char ch, int start);
int tv_move_to(const std::string& source, const std::string& match, int start);

// Copies source[start, match) into target and gives the match position (the
// length when there is none). The C form writes a terminated string; target
// must hold at least strlen(source) - start + 1 bytes.
int tv_read_to(const char* source, char* target, char ch, int start);
int tv_read_to(const char* source, char* target, const char* match, int start);
int tv_read_to(const std::string& source, std::string& target, char ch, int start);
int tv_read_to(const std::string& source, std::string& target, const std::string& match,
               int start);

// First position at or after start holding neither a blank nor a tab.
int tv_skip_space(const char* text, int start);
int tv_skip_space(const std::string& text, int start);

bool tv_compare_nocase(const std::string& a, const std::string& b);
// Position of match in text ignoring case, std::string::npos when absent;
// an empty match is found at 0.
size_t tv_find_nocase(const std::string& text, const std::string& match);
// Index of the first entry equal to text (ignoring case if asked), or -1.
int tv_find_in_vector(const std::string& text, const std::vector<std::string>& list,
                      bool ignoreCase = false);

// Copies at most length - 1 bytes of source into the buffer target of length
// bytes and always terminates it. Gives TVErrC_ok.
[[nodiscard]] int tv_copy_string(const char* source, char* target, int length);

std::string tv_tolower(const std::string& text);

// ---- Splitting and joining ------------------------------------------------

// Every separator ends a token, so empty tokens between separators are kept;
// an empty last token is dropped: "a,,b" -> 3 tokens, "a,b," -> 2, "" -> 0,
// "," -> one empty token.
std::vector<std::string> tv_tokenise(const std::string& text, char sep);
// Same, replacing the contents of tokens.
void tv_tokenise(const std::string& text, char sep, std::vector<std::string>& tokens);

// Splits at the first sep. Without sep, tag is empty and value is the text.
// Gives whether sep was found.
bool tv_tag_value(const std::string& text, char sep, std::string& tag, std::string& value);
bool tv_tag_value(const std::string& text, const std::string& sep, std::string& tag,
                  std::string& value);

// Left to right; inserted text is never searched again. An empty from, or
// from equal to to, gives the text unchanged.
std::string tv_replace_substr(const std::string& text, const std::string& from,
                              const std::string& to, bool once = false);

// Breaks each line at the last blank that keeps it within width and indents
// continuations by indent blanks (plus the line's own leading blanks with
// keepLeading). A word longer than the room left is not split. The indent is
// capped at width / 2 below a width of 21 and at width - 10 above.
// width <= 0 gives the text unchanged.
std::string tv_line_wrap(const std::string& text, int width, int indent, bool keepLeading);

// ---- Comma-separated values -----------------------------------------------

// "value" with each double quote doubled.
std::string tv_csv_out(const std::string& value);
// Appends entry, with ", " before it unless list is empty.
void tv_add_csv_entry(std::string& list, const std::string& entry);
// Reads one record. A quoted field may run over line ends (CR or LF inside
// quotes gives LF). Blanks between a separator and an opening quote are
// dropped so that what tv_add_csv_entry writes reads back. An empty,
// unquoted last field is dropped unless the line ended with a comma. At end
// of stream with nothing read, gives an empty list.
std::vector<std::string> tv_read_csv(std::istream& in);

// ---- Number forms ---------------------------------------------------------

// The empty string when value equals blank; otherwise sprintf with format
// ("%f", "%ld", "%d" when format is empty). format must suit the type.
std::string tv_double_to_string(double value, const std::string& format = std::string());
std::string tv_double_to_string(double value, const std::string& format, double blank);
std::string tv_long_to_string(long value, const std::string& format = std::string());
std::string tv_long_to_string(long value, const std::string& format, long blank);
std::string tv_int_to_string(int value, const std::string& format = std::string());
std::string tv_int_to_string(int value, const std::string& format, int blank);
std::string tv_bool_to_string(bool value);

// The default for the empty string, otherwise atof / atol / atoi.
double tv_string_to_double(const std::string& text, double defaultValue = 0.0);
long tv_string_to_long(const std::string& text, long defaultValue = 0);
int tv_string_to_int(const std::string& text, int defaultValue = 0);
bool tv_string_to_bool(const std::string& text, bool defaultValue = false);

// ---- White space and cleaning ---------------------------------------------

// In place, in this order: tabs -> blank; delete CR and LF; strip leading
// blank/tab/LF (not CR); strip trailing blank/tab/LF/CR.
[[nodiscard]] int tv_elim_whitespace(char* text, bool tabs, bool lines, bool leading,
                                 bool trailing);
void tv_elim_whitespace(std::string& text, bool tabs, bool lines, bool leading, bool trailing);

// A copy: tabs -> blank; CR and LF -> blank; then the same stripping as
// tv_elim_whitespace (all white space gives "" with trailing).
std::string tv_clean_string(const std::string& text, bool tabs, bool lines, bool leading,
                            bool trailing);
// Curly quotes to straight ones, U+2029 to LF.
std::string tv_clean_unicode(const std::string& text);
// Lines joined by " " within a paragraph, "\n\n" between paragraphs; blank
// lines separate paragraphs.
std::string tv_clean_paragraphs(const std::string& text);

// ---- Stream escapes (the serial form rests on these) ----------------------

// LF -> "\n", backslash -> "\\", CR and NUL dropped.
std::string tv_stream_out(const std::string& text);
// Backslash + n -> LF, backslash + other -> other; a lone trailing backslash
// stays.
std::string tv_stream_in(const std::string& text);
// The same, appended to out.
void tv_stream_out_append(std::string_view text, std::string& out);
void tv_stream_in_append(std::string_view text, std::string& out);

#endif
