// GUIDs and UUIDs as text, and UMIDs.
#include "kvos/guid.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using Bytes = std::array<std::uint8_t, 16>;

constexpr Bytes kCounting{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                          0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

const uuid4122_t kUuid{0x01234567, 0x89AB, 0x1DEF, 0x81, 0x02, {3, 4, 5, 6, 7, 0xA8}};

std::string guidText(std::uint32_t flags) {
    char text[64];
    EXPECT_EQ(strSetGUID(text, kCounting.data(), 0, flags), text);
    return text;
}

Bytes readGuid(const char* text) {
    Bytes bytes;
    bytes.fill(0x5A);
    EXPECT_EQ(strGetGUID(bytes.data(), text), bytes.data());
    return bytes;
}

TEST(GuidText, FlagsLeaveOutBracesAndDashes) {
    EXPECT_EQ(guidText(0), "{00112233-4455-6677-8899-aabbccddeeff}");
    EXPECT_EQ(guidText(0).size(), 38u);
    EXPECT_EQ(guidText(KVGUID_NO_BRACES), "00112233-4455-6677-8899-aabbccddeeff");
    EXPECT_EQ(guidText(KVGUID_NO_DASHES), "{00112233445566778899aabbccddeeff}");
    EXPECT_EQ(guidText(3), "00112233445566778899aabbccddeeff");
    EXPECT_EQ(guidText(0xFFFFFFFC), guidText(0));
}

TEST(GuidText, IsWrittenBehindTheOffset) {
    char text[64] = "id=";
    EXPECT_EQ(strSetGUID(text, kCounting.data(), 3, 3), text);
    EXPECT_STREQ(text, "id=00112233445566778899aabbccddeeff");
}

TEST(GuidText, TakesNoMoreRoomThanItSays) {
    std::string text(41, '#');
    strSetGUID(text.data(), kCounting.data(), 1, 0);
    EXPECT_EQ(text, std::string("#{00112233-4455-6677-8899-aabbccddeeff}\0#", 41));
}

TEST(GuidText, NullIsRefused) {
    char text[64] = "kept";
    EXPECT_EQ(strSetGUID(nullptr, kCounting.data(), 0, 0), nullptr);
    EXPECT_EQ(strSetGUID(text, nullptr, 0, 0), text);
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(strGetGUID(nullptr, "00"), nullptr);
    EXPECT_EQ(readGuid(nullptr), Bytes{});
}

TEST(GuidBytes, AreReadInTheOrderOfTheText) {
    EXPECT_EQ(readGuid("{00112233-4455-6677-8899-aabbccddeeff}"), kCounting);
    EXPECT_EQ(readGuid("00112233445566778899AABBCCDDEEFF"), kCounting);
}

TEST(GuidBytes, WhateverIsNoDigitIsPassedOver) {
    EXPECT_EQ(readGuid("0x}0-1_12233 xyz 44 556677--8899 aabbccddeeff\n"), kCounting);
    EXPECT_EQ(readGuid("no digits hr"), (Bytes{0xD0}));  // but for one "d"
}

TEST(GuidBytes, OfAShortTextTheRestIsZero) {
    EXPECT_EQ(readGuid(""), Bytes{});
    EXPECT_EQ(readGuid("a"), (Bytes{0xA0}));
    EXPECT_EQ(readGuid("{ab-c"), (Bytes{0xAB, 0xC0}));
}

TEST(GuidBytes, TheDigitsBehindTheLastByteAreNotRead) {
    EXPECT_EQ(readGuid("00112233445566778899aabbccddeeff1234"), kCounting);
}

TEST(GuidBytes, EndUpAgainInTheTextTheyCameFrom) {
    char place[40];
    std::memcpy(place, kCounting.data(), kCounting.size());
    strSetGUID(place, place, 0, 0);  // in the place of the bytes
    EXPECT_EQ(place, guidText(0));
    strGetGUID(place, place);
    EXPECT_EQ(std::memcmp(place, kCounting.data(), kCounting.size()), 0);
}

TEST(UuidText, ShowsTheFieldsMostSignificantDigitFirst) {
    char text[38];
    EXPECT_EQ(snpuid(text, sizeof text, &kUuid), 36);
    EXPECT_STREQ(text, "01234567-89ab-1def-8102-0304050607a8");
}

TEST(UuidText, AsksForOneByteMoreThanItNeeds) {
    char text[38] = "";
    EXPECT_EQ(snpuid(text, 37, &kUuid), 21);
    EXPECT_STREQ(text, "uuid string too small");
}

TEST(UuidText, TheComplaintIsCutToTheBuffer) {
    char text[8] = "#######";
    EXPECT_EQ(snpuid(text, 5, &kUuid), 21);
    EXPECT_EQ(std::string(text, 7), std::string("uuid\0##", 7));
    EXPECT_EQ(snpuid(text, 0, &kUuid), 21);
    EXPECT_EQ(text[0], 'u');
}

TEST(UuidText, NullIsRefused) {
    char text[40] = "kept";
    EXPECT_EQ(snpuid(nullptr, 40, &kUuid), -1);
    EXPECT_EQ(snpuid(text, sizeof text, nullptr), -1);
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(get_uuid4122_string(nullptr, 40), -1);
}

TEST(UuidText, IsPrintedWithALineFeed) {
    testing::internal::CaptureStdout();
    puid(&kUuid);
    puid(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "01234567-89ab-1def-8102-0304050607a8\n");
}

TEST(UuidText, OfANewOneNamesItsVersion) {
    char text[40];
    EXPECT_EQ(get_uuid4122_string(text, sizeof text), 36);
    EXPECT_EQ(text[14], '1');
    EXPECT_NE(std::strchr("89ab", text[19]), nullptr);
    EXPECT_EQ(get_uuid4122_string(text, 37), 21);
    EXPECT_STREQ(text, "uuid string too small");
}

constexpr std::uint8_t kHead[16] = {0x06, 0x0A, 0x2B, 0x34, 1, 1, 1, 5, 1, 1, 0x0F, 0x20, 0x13, 0, 0, 0};

TEST(Umid, HoldsLabelZerosAndMaterialNumber) {
    std::array<std::uint8_t, KVUMID_SIZE + 1> umid;
    umid.fill(0x5A);
    EXPECT_EQ(kvOSSetUMID330(umid.data(), kCounting.data()), 1u);
    EXPECT_EQ(std::memcmp(umid.data(), kHead, 16), 0);
    EXPECT_EQ(std::memcmp(umid.data() + 16, kCounting.data(), 16), 0);
    EXPECT_EQ(umid[KVUMID_SIZE], 0x5A);
}

TEST(Umid, ANewOneCarriesANewUuidAsItLiesInMemory) {
    uuid4122_t before, inside, after;
    std::uint8_t umid[KVUMID_SIZE];
    EXPECT_EQ(kvOSMakeGUID(&before), 1u);
    EXPECT_EQ(kvOSGenerateUMID330(umid), 1u);
    EXPECT_EQ(kvOSMakeGUID(&after), 1u);
    EXPECT_EQ(std::memcmp(umid, kHead, 16), 0);
    std::memcpy(&inside, umid + 16, sizeof inside);
    EXPECT_EQ(inside.time_hi_and_version, before.time_hi_and_version);
    EXPECT_EQ(std::memcmp(inside.node, before.node, 6), 0);
    EXPECT_NE(std::memcmp(&inside, &before, sizeof inside), 0);
    EXPECT_NE(std::memcmp(&inside, &after, sizeof inside), 0);
}

TEST(Umid, NullIsRefused) {
    std::uint8_t umid[KVUMID_SIZE] = {7};
    EXPECT_EQ(kvOSSetUMID330(nullptr, kCounting.data()), 0u);
    EXPECT_EQ(kvOSSetUMID330(umid, nullptr), 0u);
    EXPECT_EQ(umid[0], 7);
    EXPECT_EQ(kvOSGenerateUMID330(nullptr), 0u);
}

}  // namespace
