#include "search/Regex.h"

#include <algorithm>
#include <bit>
#include <cstring>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace gorvan {

namespace {

// Options that give PCRE2 the ECMAScript meaning of the constructs that differ
// between the two dialects, and keep out two constructs that would break the
// promises in the header: "\C" (one code unit, which can split a UTF-8
// character) and "(*UCP)" (which would make "\b" see non-ASCII letters).
constexpr uint32_t kExpressionOptions = PCRE2_DOLLAR_ENDONLY | PCRE2_ALT_BSUX |
                                        PCRE2_ALLOW_EMPTY_CLASS | PCRE2_MATCH_UNSET_BACKREF |
                                        PCRE2_NEVER_BACKSLASH_C | PCRE2_NEVER_UCP;

bool IsUtfError(int rc) { return rc <= PCRE2_ERROR_UTF8_ERR1 && rc >= PCRE2_ERROR_UTF8_ERR21; }

pcre2_code* CompileOne(std::string_view pattern, uint32_t options,
                       pcre2_compile_context* context, bool* jit = nullptr) {
  int error = 0;
  PCRE2_SIZE offset = 0;
  // An empty view may carry a null pointer; PCRE2 wants a real one.
  const char* data = pattern.data() != nullptr ? pattern.data() : "";
  pcre2_code* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(data), pattern.size(), options,
                                   &error, &offset, context);
  if (code != nullptr) {
    // Without JIT (unsupported CPU, no executable memory) the interpreter runs
    // the same code, only slower; that is not a failure.
    const int rc = pcre2_jit_compile(code, PCRE2_JIT_COMPLETE);
    if (jit != nullptr) *jit = rc == 0;
  }
  return code;
}

}  // namespace

Regex::Regex() = default;

Regex::~Regex() {
  Reset();
  pcre2_match_data_free(matchData_);
  pcre2_match_context_free(matchContext_);
  pcre2_jit_stack_free(jitStack_);
}

void Regex::Reset() {
  pcre2_code_free(utf_);
  pcre2_code_free(bytes_);
  utf_ = nullptr;
  bytes_ = nullptr;
  utfJit_ = false;
}

bool Regex::EnsureMatchResources() {
  if (matchData_ != nullptr) {
    return true;
  }
  // One pair of offsets is enough: callers only ask whether there is a match.
  pcre2_match_data* data = pcre2_match_data_create(1, nullptr);
  pcre2_match_context* context = pcre2_match_context_create(nullptr);
  pcre2_jit_stack* stack = pcre2_jit_stack_create(32 * 1024, kJitStackMax, nullptr);
  if (data == nullptr || context == nullptr) {
    pcre2_match_data_free(data);
    pcre2_match_context_free(context);
    pcre2_jit_stack_free(stack);
    return false;
  }
  pcre2_set_match_limit(context, kMatchLimit);
  pcre2_set_depth_limit(context, kMatchLimit);
  pcre2_set_heap_limit(context, kHeapLimitKiB);
  // Without a stack of our own JIT uses 32 KiB of the machine stack, which
  // long names with nested groups can exhaust.
  if (stack != nullptr) {
    pcre2_jit_stack_assign(context, nullptr, stack);
  }
  matchData_ = data;
  matchContext_ = context;
  jitStack_ = stack;
  return true;
}

bool Regex::Compile(std::string_view pattern, Options options) {
  Reset();
  if (!EnsureMatchResources()) {
    return false;
  }
  pcre2_compile_context* context = pcre2_compile_context_create(nullptr);
  if (context == nullptr) {
    return false;
  }
  // "." stops at a line feed only, whatever the library's build default is.
  pcre2_set_newline(context, PCRE2_NEWLINE_LF);

  uint32_t flags = options.literal ? PCRE2_LITERAL : kExpressionOptions;
  if (options.caseless) flags |= PCRE2_CASELESS;
  if (options.anchored) flags |= PCRE2_ANCHORED;
  if (options.endAnchored) flags |= PCRE2_ENDANCHORED;

  NoteLiteral(pattern, options);
  utf_ = CompileOne(pattern, flags | PCRE2_UTF, context, &utfJit_);
  // The byte-mode copy serves subjects that are not valid UTF-8, and every
  // subject when the pattern itself is not. It may fail where the UTF-8 one
  // compiled (a code point above 255); such subjects then simply never match.
  bytes_ = CompileOne(pattern, flags, context);
  pcre2_compile_context_free(context);
  return IsCompiled();
}

void Regex::NoteLiteral(std::string_view pattern, const Options& options) {
  literal_.assign(pattern);
  literalCaseless_ = options.caseless;
  const bool ascii = IsAscii(pattern);
  literalFast_ = !options.anchored && !options.endAnchored && ascii &&
                 (options.literal || pattern.find_first_of("\\^$.[]|()?*+{}") == std::string_view::npos);
  // Only k and s have case partners outside ASCII (the Kelvin sign, the long s).
  literalFoldExact_ = !options.caseless || pattern.find_first_of("kKsS") == std::string_view::npos;
}

bool Regex::ContainsAsciiNoCase(std::string_view field, std::string_view text) {
  if (text.size() > field.size()) return false;
  if (text.empty()) return true;
  const auto fold = [](char c) {
    const auto u = static_cast<unsigned char>(c);
    return (u >= 'A' && u <= 'Z') ? static_cast<unsigned char>(u + ('a' - 'A')) : u;
  };
  // A letter is looked for with its case bit (0x20) set: only its two cases
  // give the folded letter then. Anything else is compared as it is.
  const unsigned char first = fold(text[0]);
  const unsigned char caseBit = (first >= 'a' && first <= 'z') ? 0x20 : 0;
  const std::string_view rest = text.substr(1);
  const char* const data = field.data();
  const auto restMatches = [&](size_t at) {
    return std::equal(rest.begin(), rest.end(), data + at + 1,
                      [&](char a, char b) { return fold(a) == fold(b); });
  };
  const size_t starts = field.size() - text.size() + 1;  // candidate positions
  // Tests the candidates whose bits are set in mask, bit k meaning base + k.
  const auto anyMatches = [&](size_t base, uint64_t mask) {
    for (; mask != 0; mask &= mask - 1) {
      if (restMatches(base + static_cast<size_t>(__builtin_ctzll(mask)))) return true;
    }
    return false;
  };
  // Bits of the candidate positions from `from` below `starts` in a block at base.
  const auto wanted = [&](size_t base, size_t from, size_t width) {
    const size_t lo = from - base;
    const size_t hi = std::min(starts - base, width);
    const uint64_t below = hi >= 64 ? ~uint64_t{0} : (uint64_t{1} << hi) - 1;
    return below & ~((uint64_t{1} << lo) - 1);
  };
#if defined(__SSE2__)
  if (field.size() >= 16) {
    // Sixteen candidates at a time; the last block is loaded to end at the
    // field's end, its positions already seen masked out.
    const __m128i want = _mm_set1_epi8(static_cast<char>(first));
    const __m128i bit = _mm_set1_epi8(static_cast<char>(caseBit));
    for (size_t i = 0; i < starts; i += 16) {
      const size_t base = std::min(i, field.size() - 16);
      const __m128i chunk =
          _mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(data + base)), bit);
      const auto hits = static_cast<uint64_t>(
          static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, want))));
      if (anyMatches(base, hits & wanted(base, i, 16))) return true;
    }
    return false;
  }
#endif
  if (std::endian::native == std::endian::little && field.size() >= 8) {
    // Eight candidates at a time in a 64-bit word: a byte equal to the wanted
    // one becomes zero, and zero bytes are found with the usual borrow test.
    // Bytes after a true zero may be flagged falsely; the full compare sorts
    // them out.
    const uint64_t ones = 0x0101010101010101ULL;
    const uint64_t want = ones * first;
    const uint64_t bit = ones * caseBit;
    for (size_t i = 0; i < starts; i += 8) {
      const size_t base = std::min(i, field.size() - 8);
      uint64_t word;
      std::memcpy(&word, data + base, 8);
      const uint64_t x = (word | bit) ^ want;
      uint64_t zeros = (x - ones) & ~x & (ones << 7);
      uint64_t hits = 0;
      for (; zeros != 0; zeros &= zeros - 1) hits |= uint64_t{1} << (__builtin_ctzll(zeros) / 8);
      if (anyMatches(base, hits & wanted(base, i, 8))) return true;
    }
    return false;
  }
  for (size_t i = 0; i < starts; ++i) {
    if ((static_cast<unsigned char>(data[i]) | caseBit) == first && restMatches(i)) return true;
  }
  return false;
}

Regex::Result Regex::MatchWith(pcre2_code* code, std::string_view subject, int* rc) {
  const char* data = subject.data() != nullptr ? subject.data() : "";
  *rc = pcre2_match(code, reinterpret_cast<PCRE2_SPTR>(data), subject.size(), 0, 0, matchData_,
                    matchContext_);
  if (*rc >= 0) {
    return Result::kMatch;
  }
  return *rc == PCRE2_ERROR_NOMATCH ? Result::kNoMatch : Result::kFailed;
}

bool Regex::IsAscii(std::string_view text) {
  const char* p = text.data();
  const size_t n = text.size();
  uint64_t any = 0;
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    uint64_t word;
    std::memcpy(&word, p + i, 8);
    any |= word;
  }
  for (; i < n; ++i) any |= static_cast<unsigned char>(p[i]);
  return (any & 0x8080808080808080ULL) == 0;
}

Regex::Result Regex::Match(std::string_view subject) {
  int rc = 0;
  if (literalFast_ && IsCompiled() && (literalFoldExact_ || IsAscii(subject))) {
    const bool found = literalCaseless_
                           ? ContainsAsciiNoCase(subject, literal_)
                           : subject.find(literal_) != std::string_view::npos;
    return found ? Result::kMatch : Result::kNoMatch;
  }
  if (utfJit_ && IsAscii(subject)) {
    // Most names are ASCII: straight into the JIT code, which would otherwise
    // be reached only after pcre2_match has validated the subject's UTF-8.
    const char* data = subject.data() != nullptr ? subject.data() : "";
    rc = pcre2_jit_match(utf_, reinterpret_cast<PCRE2_SPTR>(data), subject.size(), 0, 0,
                         matchData_, matchContext_);
    if (rc >= 0) return Result::kMatch;
    return rc == PCRE2_ERROR_NOMATCH ? Result::kNoMatch : Result::kFailed;
  }
  if (utf_ != nullptr) {
    // pcre2_match checks the subject's UTF-8 first and says so when it is not.
    Result result = MatchWith(utf_, subject, &rc);
    if (result != Result::kFailed || !IsUtfError(rc)) {
      return result;
    }
  }
  if (bytes_ == nullptr) {
    return Result::kFailed;
  }
  return MatchWith(bytes_, subject, &rc);
}

}  // namespace gorvan
