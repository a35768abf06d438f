// One block compressed and unpacked, beside zlib's own calls and the streams of other programs.
#include "kvos/compression.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>
#include <zlib.h>

#include "support/scratch.h"

namespace {

constexpr std::uint32_t kFailed = 0xFFFFFFFF;

std::uint32_t length(std::string_view bytes) { return static_cast<std::uint32_t>(bytes.size()); }

std::optional<std::string> compressed(const std::string& bytes, std::uint32_t room) {
    std::string out(room + 4, '#');
    const std::uint32_t result = kvOSCompress(bytes.data(), length(bytes), out.data(), room);
    EXPECT_EQ(out.substr(room), "####");
    if (result == kFailed) return std::nullopt;
    out.resize(result - room);
    return out;
}

std::string compressed(const std::string& bytes) {
    return compressed(bytes, static_cast<std::uint32_t>(compressBound(bytes.size()))).value_or("failed");
}

/// The input in a block of its own, so that a sanitizer sees the first byte read behind it.
std::optional<std::string> unpacked(std::string_view stream, std::size_t room) {
    const std::unique_ptr<char[]> exact(new char[stream.size() + 1]);
    stream.copy(exact.get() + 1, stream.size());
    std::string out(room + 4, '#');
    const std::uint32_t result =
        kvOSUncompress(exact.get() + 1, length(stream), out.data(), static_cast<std::uint32_t>(room));
    EXPECT_EQ(out.substr(room), "####");
    if (result == kFailed) return std::nullopt;
    EXPECT_LE(result, room);
    out.resize(result);
    return out;
}

std::string zlibCompressed(const std::string& bytes, int level) {
    uLongf size = compressBound(bytes.size());
    std::string out(size, '\0');
    EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                        bytes.size(), level),
              Z_OK);
    out.resize(size);
    return out;
}

/// What a program makes of standard input.
std::string madeBy(const std::string& command, const std::string& input) {
    const kvtest::ScratchFolder folder;
    kvtest::makeFile(folder / "in", input);
    const std::string line = command + " < '" + (folder / "in") + "' > '" + (folder / "out") + "' 2>/dev/null";
    if (std::system(line.c_str()) != 0) return "";
    return kvtest::contentOf(folder / "out");
}

/// Texts of every kind of redundancy, from none to nothing else.
std::string sample(std::mt19937& engine, std::size_t size) {
    const unsigned letters = std::uniform_int_distribution<unsigned>(1, 256)(engine);
    std::uniform_int_distribution<unsigned> letter(0, letters - 1);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(static_cast<unsigned char>(letter(engine)));
    return bytes;
}

/// What a stream that was set up makes of the bytes, in one call; ends the stream.
std::string packedBy(z_stream& stream, const std::string& bytes) {
    std::string out(deflateBound(&stream, bytes.size()) + 100, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = length(bytes);
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = length(out);
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

TEST(CompressedLength, HasFiveBytesForEach16KiBBegunAndSix) {
    EXPECT_EQ(kvOSCalcCompressedLen(0), 6u);
    EXPECT_EQ(kvOSCalcCompressedLen(1), 12u);
    EXPECT_EQ(kvOSCalcCompressedLen(16384), 16395u);
    EXPECT_EQ(kvOSCalcCompressedLen(16385), 16401u);
}

TEST(CompressedLength, CountsBlocksInSigned32Bits) {
    EXPECT_EQ(kvOSCalcCompressedLen(0x7FFFC000), 0x7FFFC000u + 5 * 0x1FFFF + 6);
    EXPECT_EQ(kvOSCalcCompressedLen(0x7FFFC001), 0x7FFFC001u - 5 * 0x20000 + 6);
    EXPECT_EQ(kvOSCalcCompressedLen(0xFFFFC001), 0xFFFFC001u + 6);  // the sum is 0
    EXPECT_EQ(kvOSCalcCompressedLen(0xFFFFC000), 0xFFFFC000u + 6);  // and here -1, toward zero
    EXPECT_EQ(kvOSCalcCompressedLen(0xFFFFFFFF), 5u);
}

std::string gzipped(const std::string& bytes) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY), Z_OK);
    return packedBy(stream, bytes);
}

bool hasPython() { return std::system("python3 -c '' 2>/dev/null") == 0; }

/// Bytes of which no three in a row come twice, so that zlib finds nothing to save.
std::string withoutRepeats(std::size_t size) {
    std::mt19937 engine(5);
    std::vector<bool> isUsed(1 << 24);
    std::string bytes;
    std::uint32_t lastThree = 0;
    while (bytes.size() < size) {
        const std::uint32_t next = engine() & 0xFF;
        const std::uint32_t three = (lastThree << 8 | next) & 0xFFFFFF;
        if (isUsed[three]) continue;
        isUsed[three] = true;
        lastThree = three;
        bytes += static_cast<char>(static_cast<unsigned char>(next));
    }
    return bytes;
}

TEST(CompressedLength, IsEnoughForRandomBytesOfOneAndMore) {
    std::mt19937 engine(1);
    for (const std::size_t size : {1UL, 2UL, 100UL, 16383UL, 16384UL, 16385UL, 32768UL, 1000000UL, 5000000UL}) {
        std::string bytes(size, '\0');
        for (char& c : bytes) c = static_cast<char>(engine());
        EXPECT_TRUE(compressed(bytes, kvOSCalcCompressedLen(length(bytes))).has_value()) << size;
    }
}

TEST(CompressedLength, CanBeAFewBytesShortOf16KiBAndMoreWithoutRepeats) {
    EXPECT_TRUE(compressed(withoutRepeats(16383), kvOSCalcCompressedLen(16383)).has_value());
    for (const std::size_t size : {16384UL, 32768UL, 1048576UL}) {
        const std::string bytes = withoutRepeats(size);
        const std::uint32_t room = kvOSCalcCompressedLen(length(bytes));
        EXPECT_EQ(compressed(bytes, room), std::nullopt) << size;
        EXPECT_TRUE(compressed(bytes, room + room / 1000 + 16).has_value()) << size;
    }
}

TEST(CompressedLength, IsTooSmallForTheStreamOfNothing) {
    EXPECT_EQ(compressed("", kvOSCalcCompressedLen(0)), std::nullopt);
    EXPECT_EQ(compressed("", 8), zlibCompressed("", Z_DEFAULT_COMPRESSION));
}

TEST(Compress, TheResultIsTheDestinationsLengthPlusTheStreams) {
    const std::string bytes(1000, 'a');
    std::string out(500, '\0');
    const std::uint32_t result = kvOSCompress(bytes.data(), 1000, out.data(), 500);
    EXPECT_EQ(result, 500 + zlibCompressed(bytes, -1).size());
}

TEST(Compress, MakesTheStreamOfZlibsDefaultLevel) {
    std::mt19937 engine(2);
    for (int i = 0; i < 100; ++i) {
        const std::string bytes = sample(engine, engine() % 70000);
        ASSERT_EQ(compressed(bytes), zlibCompressed(bytes, Z_DEFAULT_COMPRESSION));
    }
    EXPECT_EQ(compressed(""), zlibCompressed("", Z_DEFAULT_COMPRESSION));
}

TEST(Compress, ADestinationThatIsTooSmallFails) {
    const std::string bytes = "some text that is long enough to be compressed, text that is long enough";
    const std::uint32_t size = length(compressed(bytes));
    EXPECT_TRUE(compressed(bytes, size).has_value());
    for (std::uint32_t room = 0; room < size; ++room) EXPECT_EQ(compressed(bytes, room), std::nullopt) << room;
}

TEST(Compress, NullIsRefusedButForAnEmptySource) {
    char out[32];
    EXPECT_EQ(kvOSCompress(nullptr, 5, out, sizeof out), kFailed);
    EXPECT_EQ(kvOSCompress("a", 1, nullptr, 32), kFailed);
    EXPECT_EQ(kvOSCompress(nullptr, 0, out, sizeof out), sizeof out + 8);
    EXPECT_EQ(kvOSUncompress(nullptr, 5, out, sizeof out), kFailed);
    EXPECT_EQ(kvOSUncompress("a", 1, nullptr, 32), kFailed);
}

TEST(Uncompress, GivesBackWhatWasCompressed) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 engine(seed);
    for (std::size_t size = 0; size < 300; ++size) {
        const std::string bytes = sample(engine, size);
        ASSERT_EQ(unpacked(compressed(bytes), size), bytes);
    }
    for (int i = 0; i < 50; ++i) {
        const std::string bytes = sample(engine, engine() % 300000);
        ASSERT_EQ(unpacked(compressed(bytes), bytes.size()), bytes);
    }
}

TEST(Uncompress, TakesEveryLevelAndWindowOfZlib) {
    const std::string bytes = std::string(3000, 'a') + "bcd" + std::string(40000, 'e');
    for (int level = 0; level <= 9; ++level) EXPECT_EQ(unpacked(zlibCompressed(bytes, level), bytes.size()), bytes);
    for (int bits = 9; bits <= 15; ++bits) {
        for (const int gzip : {0, 16}) {
            z_stream stream{};
            ASSERT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, bits + gzip, 8, Z_DEFAULT_STRATEGY), Z_OK);
            std::string out(deflateBound(&stream, bytes.size()), '\0');
            stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
            stream.avail_in = length(bytes);
            stream.next_out = reinterpret_cast<Bytef*>(out.data());
            stream.avail_out = length(out);
            ASSERT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
            out.resize(stream.total_out);
            deflateEnd(&stream);
            EXPECT_EQ(unpacked(out, bytes.size()), bytes) << bits + gzip;
        }
    }
}

TEST(Uncompress, TakesWhatGzipWrites) {
    std::mt19937 engine(3);
    for (const char* options : {"-1", "-6", "-9", "-6 --rsyncable"}) {
        const std::string bytes = sample(engine, 100000);
        const std::string stream = madeBy(std::string("gzip -c ") + options, bytes);
        if (stream.empty()) GTEST_SKIP() << "no gzip here, or none with " << options;
        EXPECT_EQ(unpacked(stream, bytes.size()), bytes);
    }
}

TEST(Uncompress, TakesAGzipHeadWithANameAndAComment) {
    const std::string bytes = "named";
    z_stream stream{};
    ASSERT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY), Z_OK);
    Bytef name[] = "clip.mov";
    Bytef comment[] = "a comment";
    Bytef extra[] = {1, 2, 3, 4};
    gz_header head{};
    head.name = name;
    head.comment = comment;
    head.extra = extra;
    head.extra_len = sizeof extra;
    head.hcrc = 1;
    deflateSetHeader(&stream, &head);
    const std::string out = packedBy(stream, bytes);
    EXPECT_EQ(unpacked(out, 5), bytes);
}

TEST(Uncompress, TakesWhatPythonWrites) {
    const std::string bytes = std::string(70000, 'p') + "ython";
    const std::string head =
        "python3 -c 'import sys, zlib, gzip; d = sys.stdin.buffer.read(); sys.stdout.buffer.write(";
    if (!hasPython()) GTEST_SKIP() << "no python3 here";
    for (const char* call : {"zlib.compress(d, 9)", "zlib.compress(d, 0)", "gzip.compress(d)"}) {
        EXPECT_EQ(unpacked(madeBy(head + call + ")'", bytes), bytes.size()), bytes) << call;
    }
}

TEST(Uncompress, OthersTakeWhatWasCompressed) {
    if (!hasPython()) GTEST_SKIP() << "no python3 here";
    const std::string bytes = std::string(1000, 'q') + "uiet";
    const std::string back = madeBy(
        "python3 -c 'import sys, zlib; "
        "sys.stdout.buffer.write(zlib.decompress(sys.stdin.buffer.read()))'",
        compressed(bytes));
    EXPECT_EQ(back, bytes);
}

TEST(Uncompress, OfSeveralMembersTheFirstComesOut) {
    EXPECT_EQ(unpacked(gzipped("one") + gzipped("two"), 100), "one");
    EXPECT_EQ(unpacked(compressed("text") + "garbage", 100), "text");
}

TEST(Uncompress, TruncatedInputFails) {
    std::mt19937 engine(4);
    const std::string bytes = sample(engine, 3000);
    for (const std::string& stream : {compressed(bytes), gzipped(bytes)}) {
        for (std::size_t kept = 0; kept < stream.size(); ++kept) {
            ASSERT_EQ(unpacked(std::string_view(stream).substr(0, kept), bytes.size()), std::nullopt) << kept;
        }
    }
}

TEST(Uncompress, ADestinationThatIsTooSmallFails) {
    const std::string bytes = std::string(200, 'a') + "z";
    const std::string stream = compressed(bytes);
    EXPECT_EQ(unpacked(stream, bytes.size()), bytes);
    for (std::size_t room = 0; room < bytes.size(); ++room) EXPECT_EQ(unpacked(stream, room), std::nullopt) << room;
}

/// What zlib makes of a stream by itself, read piece by piece.
std::optional<std::string> inflatedByZlib(std::string_view stream, std::size_t room) {
    z_stream zlib{};
    EXPECT_EQ(inflateInit2(&zlib, 15 + 32), Z_OK);
    std::string out(room, '\0');
    zlib.next_out = reinterpret_cast<Bytef*>(out.data());
    zlib.avail_out = length(out);
    int status = Z_OK;
    for (std::size_t at = 0; at < stream.size() && status == Z_OK; ++at) {
        zlib.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data() + at));
        zlib.avail_in = 1;
        status = inflate(&zlib, Z_NO_FLUSH);
    }
    out.resize(zlib.total_out);
    inflateEnd(&zlib);
    return status == Z_STREAM_END ? std::optional(out) : std::nullopt;
}

TEST(Uncompress, DamagedInputGivesWhatZlibMakesOfIt) {
    // Mostly nothing; but unused bits of the stream and the time in a gzip head carry nothing, and sums have doubles.
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 engine(seed);
    const std::string bytes = sample(engine, 500);
    std::size_t failed = 0;
    for (const std::string& stream : {compressed(bytes), gzipped(bytes)}) {
        for (std::size_t bit = 0; bit < 8 * stream.size(); ++bit) {
            std::string damaged = stream;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            const auto result = unpacked(damaged, bytes.size() + 1000);
            ASSERT_EQ(result, inflatedByZlib(damaged, bytes.size() + 1000)) << bit;
            failed += result.has_value() ? 0 : 1;
        }
    }
    EXPECT_GT(failed, 50u);
}

TEST(Uncompress, TheChecksumIsLookedAt) {
    std::string stream = compressed("some text");
    stream.back() = static_cast<char>(stream.back() ^ 1);
    EXPECT_EQ(unpacked(stream, 100), std::nullopt);
}

TEST(Uncompress, AStreamThatAsksForADictionaryFails) {
    z_stream stream{};
    ASSERT_EQ(deflateInit(&stream, 6), Z_OK);
    const std::string dictionary = "some text";
    deflateSetDictionary(&stream, reinterpret_cast<const Bytef*>(dictionary.data()), length(dictionary));
    const std::string out = packedBy(stream, dictionary);
    EXPECT_EQ(unpacked(out, 100), std::nullopt);
}

TEST(Uncompress, NeitherRandomBytesNorRawDeflateAreAStream) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 engine(seed);
    for (int i = 0; i < 2000; ++i) {
        std::string noise = sample(engine, engine() % 200);
        if (i % 2 == 0) noise.insert(0, "\x1F\x8B\x08", 3);
        if (i % 3 == 0) noise.insert(0, "\x78\x9C", 2);
        EXPECT_EQ(unpacked(noise, 1000), std::nullopt);
    }
    EXPECT_EQ(unpacked(compressed("text").substr(2), 100), std::nullopt);
    EXPECT_EQ(unpacked("", 100), std::nullopt);
}

TEST(Uncompress, ABombFillsItsDestinationAndNoMore) {
    const std::string stream = zlibCompressed(std::string(50 << 20, '\0'), 9);
    EXPECT_LT(stream.size(), 60000u);
    EXPECT_EQ(unpacked(stream, 1000), std::nullopt);
    EXPECT_EQ(unpacked(stream, 1 << 20), std::nullopt);
}

}  // namespace
