#include <krlayout/api/KrUtf8Codec.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace {

// A byte string from byte values, so that no hex escape runs into the next character.
std::string Bytes(std::initializer_list<int> values)
{
    std::string out;
    for (int v : values) {
        out += static_cast<char>(static_cast<unsigned char>(v));
    }
    return out;
}

std::wstring const kFFFD(1, static_cast<wchar_t>(0xFFFD));

std::wstring Repeat(std::wstring const& w, int n)
{
    std::wstring out;
    for (int i = 0; i < n; ++i) {
        out += w;
    }
    return out;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Encoding.

TEST(KrUtf8Codec, EncodesAsciiAsItIs)
{
    EXPECT_EQ(KrUtf8Codec::Encode(L""), "");
    EXPECT_EQ(KrUtf8Codec::Encode(L"Ab1 ~@"), "Ab1 ~@");
    EXPECT_EQ(KrUtf8Codec::Encode(std::wstring(1, L'\0')), std::string(1, '\0'));
    EXPECT_EQ(KrUtf8Codec::Encode(std::wstring(1, static_cast<wchar_t>(0x7F))), Bytes({0x7F}));
}

TEST(KrUtf8Codec, EncodesTwoByteSequences)
{
    // U+0080 = 000 1000 0000: 110 00010, 10 000000.
    EXPECT_EQ(KrUtf8Codec::Encode(L"\u0080"), Bytes({0xC2, 0x80}));
    // U+00E9 = 000 1110 1001: 110 00011, 10 101001.
    EXPECT_EQ(KrUtf8Codec::Encode(L"\u00E9"), Bytes({0xC3, 0xA9}));
    // U+07FF, the largest two-byte value: 110 11111, 10 111111.
    EXPECT_EQ(KrUtf8Codec::Encode(L"\u07FF"), Bytes({0xDF, 0xBF}));
}

TEST(KrUtf8Codec, EncodesThreeByteSequences)
{
    EXPECT_EQ(KrUtf8Codec::Encode(L"\u0800"), Bytes({0xE0, 0xA0, 0x80}));
    // U+20AC = 0010 000010 101100: 1110 0010, 10 000010, 10 101100.
    EXPECT_EQ(KrUtf8Codec::Encode(L"\u20AC"), Bytes({0xE2, 0x82, 0xAC}));
    // The values on both sides of the surrogates, and the largest three-byte value.
    EXPECT_EQ(KrUtf8Codec::Encode(L"\uD7FF"), Bytes({0xED, 0x9F, 0xBF}));
    EXPECT_EQ(KrUtf8Codec::Encode(L"\uE000"), Bytes({0xEE, 0x80, 0x80}));
    EXPECT_EQ(KrUtf8Codec::Encode(L"\uFFFF"), Bytes({0xEF, 0xBF, 0xBF}));
}

TEST(KrUtf8Codec, EncodesFourByteSequences)
{
    EXPECT_EQ(KrUtf8Codec::Encode(L"\U00010000"), Bytes({0xF0, 0x90, 0x80, 0x80}));
    // U+1F50C = 000 011111 010100 001100: 11110 000, 10 011111, 10 010100, 10 001100.
    EXPECT_EQ(KrUtf8Codec::Encode(L"\U0001F50C"), Bytes({0xF0, 0x9F, 0x94, 0x8C}));
    EXPECT_EQ(KrUtf8Codec::Encode(L"\U0010FFFF"), Bytes({0xF4, 0x8F, 0xBF, 0xBF}));
}

TEST(KrUtf8Codec, EncodesAMixedText)
{
    EXPECT_EQ(KrUtf8Codec::Encode(L"J\u20AC@R\u00E4\U0001F50C"),
              Bytes({'J', 0xE2, 0x82, 0xAC, '@', 'R', 0xC3, 0xA4, 0xF0, 0x9F, 0x94, 0x8C}));
}

TEST(KrUtf8Codec, EncodesLoneSurrogatesAsReplacement)
{
    std::string const replacement = Bytes({0xEF, 0xBF, 0xBD});
    std::wstring high(1, static_cast<wchar_t>(0xD800));
    std::wstring low(1, static_cast<wchar_t>(0xDFFF));
    EXPECT_EQ(KrUtf8Codec::Encode(high), replacement);
    EXPECT_EQ(KrUtf8Codec::Encode(low), replacement);
    EXPECT_EQ(KrUtf8Codec::Encode(L"a" + high + L"b"), "a" + replacement + "b");
    // A low surrogate before a high one is no pair: two replacements.
    EXPECT_EQ(KrUtf8Codec::Encode(low + high), replacement + replacement);
}

TEST(KrUtf8Codec, EncodesSurrogatePairsByWidthOfWchar)
{
    std::wstring pair;
    pair += static_cast<wchar_t>(0xD83D);
    pair += static_cast<wchar_t>(0xDD0C);
    if (sizeof(wchar_t) < 4) {
        // UTF-16: D83D DD0C is U+1F50C.
        EXPECT_EQ(KrUtf8Codec::Encode(pair), Bytes({0xF0, 0x9F, 0x94, 0x8C}));
    } else {
        // One code point per element: surrogates are no scalar values, whether paired or not.
        EXPECT_EQ(KrUtf8Codec::Encode(pair), Bytes({0xEF, 0xBF, 0xBD, 0xEF, 0xBF, 0xBD}));
    }
}

TEST(KrUtf8Codec, EncodesValuesBeyondTheLastCodePointAsReplacement)
{
    if (sizeof(wchar_t) < 4) {
        GTEST_SKIP() << "a 16-bit wchar_t holds no value beyond U+FFFF";
    }
    std::string const replacement = Bytes({0xEF, 0xBF, 0xBD});
    EXPECT_EQ(KrUtf8Codec::Encode(std::wstring(1, static_cast<wchar_t>(0x110000))), replacement);
    EXPECT_EQ(KrUtf8Codec::Encode(std::wstring(1, static_cast<wchar_t>(0x7FFFFFFF))), replacement);
    EXPECT_EQ(KrUtf8Codec::Encode(std::wstring(1, static_cast<wchar_t>(-1))), replacement);
}

// ---------------------------------------------------------------------------------------------
// Decoding well-formed input.

TEST(KrUtf8Codec, DecodesAscii)
{
    EXPECT_EQ(KrUtf8Codec::Decode(""), L"");
    EXPECT_EQ(KrUtf8Codec::Decode("Ab1 ~@"), L"Ab1 ~@");
    EXPECT_EQ(KrUtf8Codec::Decode(std::string(1, '\0')), std::wstring(1, L'\0'));
}

TEST(KrUtf8Codec, DecodesTwoByteSequences)
{
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC2, 0x80})), L"\u0080");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC3, 0xA9})), L"\u00E9");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xDF, 0xBF})), L"\u07FF");
}

TEST(KrUtf8Codec, DecodesThreeByteSequences)
{
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE0, 0xA0, 0x80})), L"\u0800");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE2, 0x82, 0xAC})), L"\u20AC");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xED, 0x9F, 0xBF})), L"\uD7FF");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xEE, 0x80, 0x80})), L"\uE000");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xEF, 0xBF, 0xBF})), L"\uFFFF");
    // A well-formed U+FFFD in the input is an ordinary character.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xEF, 0xBF, 0xBD})), kFFFD);
}

TEST(KrUtf8Codec, DecodesFourByteSequences)
{
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF0, 0x90, 0x80, 0x80})), L"\U00010000");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF0, 0x9F, 0x94, 0x8C})), L"\U0001F50C");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF4, 0x8F, 0xBF, 0xBF})), L"\U0010FFFF");
    std::wstring const plug = KrUtf8Codec::Decode(Bytes({0xF0, 0x9F, 0x94, 0x8C}));
    if (sizeof(wchar_t) < 4) {
        ASSERT_EQ(plug.size(), 2u);
        EXPECT_EQ(static_cast<unsigned>(plug[0]), 0xD83Du);
        EXPECT_EQ(static_cast<unsigned>(plug[1]), 0xDD0Cu);
    } else {
        ASSERT_EQ(plug.size(), 1u);
        EXPECT_EQ(static_cast<unsigned>(plug[0]), 0x1F50Cu);
    }
}

TEST(KrUtf8Codec, DecodesAMixedText)
{
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({'W', 'e', 'g', 'f', 0xC3, 0xBC, 'h', 'r', 'u', 'n', 'g'})),
              L"Wegf\u00FChrung");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({'J', 0xE2, 0x82, 0xAC, '@', 'R', 0xC3, 0xA4, 0xF0, 0x9F,
                                         0x94, 0x8C})),
              L"J\u20AC@R\u00E4\U0001F50C");
}

// ---------------------------------------------------------------------------------------------
// Round trips.

TEST(KrUtf8Codec, WideTextRoundTrips)
{
    std::wstring const texts[] = {
        L"",
        L"plain ASCII",
        L"X3@L\u00FCfter",
        L"\u0080\u07FF\u0800\uD7FF\uE000\uFFFD\uFFFF",
        L"\U00010000\U0001F50C\U0010FFFF",
        std::wstring(L"a\0b", 3),
    };
    for (std::wstring const& w : texts) {
        EXPECT_EQ(KrUtf8Codec::Decode(KrUtf8Codec::Encode(w)), w);
    }
}

TEST(KrUtf8Codec, EveryScalarValueRoundTrips)
{
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) {
            continue;
        }
        std::wstring w;
        if (sizeof(wchar_t) < 4 && c >= 0x10000) {
            w += static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10));
            w += static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            w += static_cast<wchar_t>(c);
        }
        std::string const utf8 = KrUtf8Codec::Encode(w);
        std::size_t const expectedSize = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
        ASSERT_EQ(utf8.size(), expectedSize) << std::hex << static_cast<unsigned long>(c);
        ASSERT_EQ(KrUtf8Codec::Decode(utf8), w) << std::hex << static_cast<unsigned long>(c);
    }
}

TEST(KrUtf8Codec, WellFormedBytesRoundTrip)
{
    std::string const texts[] = {
        "",
        "Ab1",
        Bytes({0xC3, 0xA4, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x94, 0x8C}),
        Bytes({0xEF, 0xBF, 0xBD, 0xF4, 0x8F, 0xBF, 0xBF, 0xED, 0x9F, 0xBF}),
    };
    for (std::string const& s : texts) {
        EXPECT_EQ(KrUtf8Codec::Encode(KrUtf8Codec::Decode(s)), s);
    }
}

// ---------------------------------------------------------------------------------------------
// Decoding bad input: one U+FFFD per maximal ill-formed part, decoding goes on after it.

TEST(KrUtf8Codec, StrayContinuationBytesAreReplacedOneByOne)
{
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0x80})), kFFFD);
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xBF})), kFFFD);
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({'a', 0x80, 'b'})), L"a" + kFFFD + L"b");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0x80, 0x80, 0x80})), Repeat(kFFFD, 3));
    // A well-formed sequence with one continuation byte too many.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC3, 0xA9, 0xA9})), L"\u00E9" + kFFFD);
}

TEST(KrUtf8Codec, BytesThatNeverOccurAreReplaced)
{
    for (int b : {0xC0, 0xC1, 0xF5, 0xF6, 0xF7, 0xF8, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF}) {
        EXPECT_EQ(KrUtf8Codec::Decode(Bytes({b})), kFFFD) << std::hex << b;
        EXPECT_EQ(KrUtf8Codec::Decode(Bytes({'x', b, 'y'})), L"x" + kFFFD + L"y") << std::hex << b;
    }
}

TEST(KrUtf8Codec, OverlongEncodingsAreReplaced)
{
    // C0 80 (U+0000 in two bytes) and C1 BF (U+007F): C0 and C1 start nothing; 80 and BF are
    // stray continuation bytes.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC0, 0x80})), Repeat(kFFFD, 2));
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC1, 0xBF})), Repeat(kFFFD, 2));
    // E0 80 80 (U+0000) and E0 9F BF (U+07FF) in three bytes: E0 needs A0..BF next.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE0, 0x80, 0x80})), Repeat(kFFFD, 3));
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE0, 0x9F, 0xBF})), Repeat(kFFFD, 3));
    // F0 80 80 80 (U+0000) and F0 8F BF BF (U+FFFF) in four bytes: F0 needs 90..BF next.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF0, 0x80, 0x80, 0x80})), Repeat(kFFFD, 4));
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF0, 0x8F, 0xBF, 0xBF})), Repeat(kFFFD, 4));
}

TEST(KrUtf8Codec, EncodedSurrogatesAreReplaced)
{
    // ED A0 80 (U+D800) and ED BF BF (U+DFFF): ED needs 80..9F next.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xED, 0xA0, 0x80})), Repeat(kFFFD, 3));
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xED, 0xBF, 0xBF})), Repeat(kFFFD, 3));
    // A surrogate pair each half encoded on its own (U+D83D U+DD0C): six replacements.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xED, 0xA0, 0xBD, 0xED, 0xB4, 0x8C})), Repeat(kFFFD, 6));
}

TEST(KrUtf8Codec, CodePointsBeyondTheLastAreReplaced)
{
    // F4 90 80 80 (U+110000): F4 needs 80..8F next.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF4, 0x90, 0x80, 0x80})), Repeat(kFFFD, 4));
    // F5 80 80 80 (U+140000) and F7 BF BF BF (U+1FFFFF): F5..F7 start nothing.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF5, 0x80, 0x80, 0x80})), Repeat(kFFFD, 4));
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF7, 0xBF, 0xBF, 0xBF})), Repeat(kFFFD, 4));
    // The old five- and six-byte forms: every byte on its own.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF8, 0x88, 0x80, 0x80, 0x80})), Repeat(kFFFD, 5));
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xFC, 0x84, 0x80, 0x80, 0x80, 0x80})), Repeat(kFFFD, 6));
}

TEST(KrUtf8Codec, SequencesCutShortByTheEndAreOneReplacement)
{
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC3})), kFFFD);
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE2})), kFFFD);
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE2, 0x82})), kFFFD);
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF0, 0x9F})), kFFFD);
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({'a', 0xF0, 0x9F, 0x94})), L"a" + kFFFD);
}

TEST(KrUtf8Codec, SequencesCutShortByAnotherByteAreOneReplacementThenThatByte)
{
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC3, 'A'})), kFFFD + L"A");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE2, 0x82, 'A'})), kFFFD + L"A");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF0, 0x9F, 0x94, 'A'})), kFFFD + L"A");
    // The byte that cuts a sequence short may start the next one.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xE2, 0x82, 0xC3, 0xA9})), kFFFD + L"\u00E9");
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xF0, 0x9F, 0xE2, 0x82, 0xAC})), kFFFD + L"\u20AC");
    // Two start bytes in a row: each is cut short by the next.
    EXPECT_EQ(KrUtf8Codec::Decode(Bytes({0xC3, 0xC3})), Repeat(kFFFD, 2));
}

// ---------------------------------------------------------------------------------------------
// One step at a time.

TEST(KrUtf8Codec, DecodeNextReadsOneSequence)
{
    std::string const text = Bytes({'A', 0xC3, 0xA9, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x94, 0x8C});
    std::size_t pos = 0;
    char32_t c = 0;
    EXPECT_TRUE(KrUtf8Codec::DecodeNext(text, pos, c));
    EXPECT_EQ(pos, 1u);
    EXPECT_EQ(c, U'A');
    EXPECT_TRUE(KrUtf8Codec::DecodeNext(text, pos, c));
    EXPECT_EQ(pos, 3u);
    EXPECT_EQ(c, 0xE9u);
    EXPECT_TRUE(KrUtf8Codec::DecodeNext(text, pos, c));
    EXPECT_EQ(pos, 6u);
    EXPECT_EQ(c, 0x20ACu);
    EXPECT_TRUE(KrUtf8Codec::DecodeNext(text, pos, c));
    EXPECT_EQ(pos, 10u);
    EXPECT_EQ(c, 0x1F50Cu);
    // At the end nothing moves.
    c = 0;
    EXPECT_FALSE(KrUtf8Codec::DecodeNext(text, pos, c));
    EXPECT_EQ(pos, 10u);
    EXPECT_EQ(c, 0xFFFDu);
}

TEST(KrUtf8Codec, DecodeNextSkipsTheIllFormedPart)
{
    std::string const text = Bytes({0xE2, 0x82, 'A', 0x80, 0xED, 0xA0, 0x80, 0xF4, 0x8F, 0xBF});
    std::size_t pos = 0;
    char32_t c = 0;
    EXPECT_FALSE(KrUtf8Codec::DecodeNext(text, pos, c));  // E2 82, cut short by 'A'
    EXPECT_EQ(pos, 2u);
    EXPECT_EQ(c, 0xFFFDu);
    EXPECT_TRUE(KrUtf8Codec::DecodeNext(text, pos, c));
    EXPECT_EQ(pos, 3u);
    EXPECT_EQ(c, U'A');
    EXPECT_FALSE(KrUtf8Codec::DecodeNext(text, pos, c));  // stray 80
    EXPECT_EQ(pos, 4u);
    EXPECT_FALSE(KrUtf8Codec::DecodeNext(text, pos, c));  // ED, which A0 does not continue
    EXPECT_EQ(pos, 5u);
    EXPECT_FALSE(KrUtf8Codec::DecodeNext(text, pos, c));  // stray A0
    EXPECT_EQ(pos, 6u);
    EXPECT_FALSE(KrUtf8Codec::DecodeNext(text, pos, c));  // stray 80
    EXPECT_EQ(pos, 7u);
    EXPECT_FALSE(KrUtf8Codec::DecodeNext(text, pos, c));  // F4 8F BF, cut short by the end
    EXPECT_EQ(pos, 10u);
    EXPECT_EQ(c, 0xFFFDu);
}
