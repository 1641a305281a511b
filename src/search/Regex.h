#pragma once
// Regex: one compiled regular expression (PCRE2, 8-bit, JIT where the platform
// has it) together with everything a match needs, so that matching allocates
// nothing and never copies the subject.
//
// Syntax and meaning follow ECMAScript-style expressions: alternation, groups,
// classes, greedy and lazy quantifiers, "\b" as the boundary between an ASCII
// word character [A-Za-z0-9_] and anything else, "$" only at the very end,
// "." anything but a line feed, "\uhhhh" escapes, "[]" and "[^]".
//
// Text encoding. Subjects are UTF-8 but may carry bytes that are not (raw file
// names). Each expression is compiled twice: once in UTF-8 mode, where one
// character is one code point and ignoring case uses Unicode simple case
// folding ("É" = "é"), and once in byte mode, where one character is one byte
// and only ASCII letters fold. A valid UTF-8 subject is matched in UTF-8 mode;
// any other subject in byte mode, so that a name like "caf\xE9" still counts
// "\xE9" as one character, as it was on the single-byte system it came from.
// An expression that is itself not valid UTF-8 is used in byte mode only.
//
// Runaway matches. The number of backtracking steps, the interpreter's memory
// and the JIT stack are limited; a match that hits a limit reports kFailed
// instead of running for minutes.
//
// Not thread-safe: one Regex serves one thread at a time.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct pcre2_real_code_8;
struct pcre2_real_match_data_8;
struct pcre2_real_match_context_8;
struct pcre2_real_jit_stack_8;

namespace gorvan {

class Regex {
 public:
  struct Options {
    bool caseless = false;     // ignore case
    bool literal = false;      // the pattern is plain text, no metacharacters
    bool anchored = false;     // a match must start at the subject's start
    bool endAnchored = false;  // a match must end at the subject's end
  };

  enum class Result {
    kMatch,
    kNoMatch,
    kFailed,  // nothing compiled, a limit was hit, or no mode can read the subject
  };

  // Backtracking steps allowed for one match (PCRE2's own default, kept
  // explicit so that a different build of the library does not change it).
  static constexpr uint32_t kMatchLimit = 10'000'000;
  // Interpreter memory for one match, in KiB (used when JIT is unavailable).
  static constexpr uint32_t kHeapLimitKiB = 64 * 1024;
  // JIT stack for one match.
  static constexpr std::size_t kJitStackMax = 4 * 1024 * 1024;

  Regex();
  ~Regex();
  Regex(const Regex&) = delete;
  Regex& operator=(const Regex&) = delete;

  // Compiles `pattern`, replacing what was compiled before.
  // On success returns true; Match() then tests subjects against it.
  // On failure (invalid expression, an expression too large for the engine,
  // out of memory) returns false, and Match() reports kFailed for every
  // subject until the next successful Compile().
  bool Compile(std::string_view pattern, Options options);

  // Frees the compiled expression; Match() reports kFailed afterwards.
  void Reset();

  bool IsCompiled() const { return utf_ != nullptr || bytes_ != nullptr; }

  // Tests whether the expression matches anywhere in `subject` (or, with the
  // anchoring options, at its start / end). Allocates nothing.
  Result Match(std::string_view subject);

  // True when every byte is below 0x80. Such a text is valid UTF-8 as it
  // stands, which lets a match skip the engine's own validity check.
  static bool IsAscii(std::string_view text);
  // True when text holds field's characters somewhere, comparing ASCII letters
  // without regard to case and every other byte exactly.
  static bool ContainsAsciiNoCase(std::string_view field, std::string_view text);

 private:
  bool EnsureMatchResources();
  // An unanchored expression without metacharacters is a plain text: it is
  // found by a byte search where that gives the engine's answer exactly.
  void NoteLiteral(std::string_view pattern, const Options& options);
  Result MatchWith(pcre2_real_code_8* code, std::string_view subject, int* rc);

  pcre2_real_code_8* utf_ = nullptr;    // null when the pattern is unusable as UTF-8
  pcre2_real_code_8* bytes_ = nullptr;  // null when the pattern fails in byte mode
  bool utfJit_ = false;                 // utf_ has JIT code
  std::string literal_;                 // the text of a plain-text expression
  bool literalFast_ = false;            // literal_ may be searched for bytewise
  bool literalCaseless_ = false;
  bool literalFoldExact_ = false;       // ASCII folding is exact for literal_
  pcre2_real_match_data_8* matchData_ = nullptr;
  pcre2_real_match_context_8* matchContext_ = nullptr;
  pcre2_real_jit_stack_8* jitStack_ = nullptr;
};

}  // namespace gorvan
