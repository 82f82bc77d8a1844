#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "core/ByteOrder.h"
#include "nav/NavigationStatusText.h"
#include "nav/SentenceParser.h"

namespace halvo {
namespace {

constexpr std::int32_t kSecond = 1534758459;

TEST(SentenceParser, EachKindAcceptsOnlyWhatItCanRead) {
    using K = SentenceKind;
    const std::tuple<std::string_view, SentenceKind, bool> cases[] = {

        {"$GPGLL,9000.0,N,18000.0,E", K::GLL, true},
        {"$XXGLL,0,s,0,w*00", K::GLL, true},
        {"$GPGLL,9000.1,N,18000.0,E", K::GLL, false},
        {"$GPGLL,4916.45,N,18000.01,E", K::GLL, false},
        {"$GPGLL,-0.5,N,100,E", K::GLL, false},
        {"$GPGLL,4916.45,X,12311.12,W", K::GLL, false},
        {"$GPGLL,4916.45,N,12311.12,Q", K::GLL, false},
        {"$GPGLL,4916.45,N,12311.12", K::GLL, false},
        {"$GPGLL,4916.45,N,12311.12,W,999999,A", K::GLL, true},  // bad time still counts
        {"$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9", K::GGA, true},
        {"$GPGGA,,4807.038,N,01131.000,E", K::GGA, true},
        {"$GPGGA,,,,,,0,00,99.99,,,,,,*48", K::GGA, false},
        {"$GPGXY,2147000,a,-2147000,b,101010", K::GXY, true},
        {"$GPGXY,2147000.5,a,0,b", K::GXY, false},
        {"$GPGGU,-214700000,a,214700000,b", K::GGU, true},
        {"$GPGGU,214700001,a,0,b", K::GGU, false},
        {"$GPGGU,1,,2,b", K::GGU, false},
        {"GPGLL,4916.45,N,12311.12,W", K::None, false},
        {"$GP", K::None, false},
        {"$GPXYZ,1,2", K::None, false},

        {"$GPRMC,094739,A,5251.0073,N,00518.8130,E,5.7,229.9,200818,1.4,E,A*1E", K::RMC, true},
        {"$GPRMC,094739,A,5251.0073,N,00518.8130,E,5.7,229.9", K::RMC, true},
        {"$GPRMC,094739,A,5251.0073,N,00518.8130,E,5.7,229.9,xx,yy,", K::RMC, true},
        {"$GPRMC,094739,A,5251.0073,N,00518.8130,E,5.7,,200818", K::RMC, false},
        {"$GPRMC,0947,A,5251.0073,N,00518.8130,E,5.7,229.9,200818", K::RMC, false},
        {"$GPRMC,094739,,5251.0073,N,00518.8130,E,5.7,229.9,200818", K::RMC, false},
        {"$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K", K::VTG, true},
        {"$GPVTG,1,T,2,M,3,N", K::VTG, false},  // three pairs
        {"$GPVTG,1,T,2,M,3,N,,K", K::VTG, false},

        {"$SDHDG,228.5,,,1.3,E*3A", K::HDG, true},
        {"$SDHDG,228.5,1,Q,1.3,E", K::HDG, false},
        {"$SDHDG,,,,1.3,E", K::HDG, false},
        {"$INMTW,17.9,C*1B", K::MTW, true},
        {"$SDMTW,,C", K::MTW, false},
        {"$GPHDT,274.12,T", K::HDT, true},
        {"$GPHDT,,T", K::HDT, false},
        {"$INDPT,2.0,0.0*45", K::DPT, true},
        {"$INDPT,2.0,abc", K::DPT, false},
        {"$SDDBT,17.3,f,5.2,M,2.8,F*3E", K::DBT, true},
        {"$SDDBT,,f,,M,,F", K::DBT, false},
        {"$GPRMA,A,5000,N,00100,W,1,2,3,4,5,E", K::RMA, true},
        {"$GPRMA,A,5000,N,00100,W,1,x", K::RMA, false},
        {"$GPOSD,90.0,A,91.0,B,5.0,C,1.0,2.0,D", K::OSD, true},
        {"$GPOSD,,A", K::OSD, false},
        {"$GPEVT,A,first,second*00", K::EVT, true},
        {"$GPEVT,,first", K::EVT, false},
        {"$GPEMA,12,first", K::EMA, true},
        {"$GPEMA,x,first", K::EMA, false},
    };
    for (const auto& [text, kind, accepted] : cases) {
        SCOPED_TRACE(text);
        SentenceParser p;
        const SentenceResult r = p.ParseSentence(text, kSecond, 0);
        EXPECT_EQ(r.kind, kind);
        EXPECT_EQ(r.accepted, accepted);
        EXPECT_EQ(p.History().At(0).Text().substr(0, 3), accepted ? "OK:" : "??:");
    }
}

TEST(SentenceParser, TimeLimitsOfGll) {
    const std::pair<std::string_view, int> cases[] = {
        {"240000", 24}, {"246000", 24},  {"245960", 24}, {"250000", 0},
        {"236100", 0},  {"235960.5", 0}, {"12", 0},      {"-10000", 0}};
    for (const auto& [time, hour] : cases) {
        SentenceParser p;
        const std::string s = "$GPGLL,4916.45,N,12311.12,W," + std::string(time);
        ASSERT_TRUE(p.ParseSentence(s, kSecond, 0)) << s;
        EXPECT_EQ(p.Fix().gll.hour, hour) << s;
    }
}

TEST(SentenceParser, FieldsLandInTheFixGllWritesAsItGoes) {
    SentenceParser p;
    ASSERT_TRUE(p.ParseSentence("$GPGLL,4916.45,N,12311.12,W,225444,A", 100, 0));
    const LatLonRecord& g = p.Fix().gll;
    EXPECT_EQ(std::tie(g.latDegrees, g.lonDegrees, g.lonHemisphere, g.hour, g.stamp),
              std::make_tuple(49, 123, 'W', 22, 100));
    EXPECT_NEAR(g.latMinutes, 16.45f, 1e-4);
    EXPECT_EQ(p.Fix().maskA, MaskGll);

    // A refused GLL keeps the latitude it read before the bad hemisphere, but not its stamp.
    EXPECT_FALSE(p.ParseSentence("$GPGLL,5000.00,X,12311.12,W", 200, 0));
    EXPECT_EQ(std::tie(g.latDegrees, g.latHemisphere, g.stamp), std::make_tuple(50, 'N', 100));

    // A refused VTG leaves the last one alone.
    ASSERT_TRUE(p.ParseSentence("$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K", 300, 0));
    EXPECT_FALSE(p.ParseSentence("$GPVTG,1,T,2,M,3,N,,K", 400, 0));
    EXPECT_FLOAT_EQ(p.Fix().vtg.trueCourse, 54.7f);
    EXPECT_FLOAT_EQ(p.Fix().vtg.speedKmh, 10.2f);
    EXPECT_EQ(p.Fix().vtg.stamp, 300);
    ASSERT_TRUE(p.ParseSentence("$GPVTG,9,K,8,N,7,M,6,T", 500, 0));  // any order
    EXPECT_FLOAT_EQ(p.Fix().vtg.trueCourse, 6.0f);
    EXPECT_FLOAT_EQ(p.Fix().vtg.speedKmh, 9.0f);

    ASSERT_TRUE(
        p.ParseSentence("$GPRMC,094739,A,5251.0073,N,00518.8130,E,5.7,229.9,200818,1.4,E", 1, 0));
    const RmcRecord& r = p.Fix().rmc;
    EXPECT_EQ(std::tie(r.hour, r.minute, r.course, r.day, r.month, r.year, r.variationSide),
              std::make_tuple(9, 47, 229.9f, 20, 8, 18, 'E'));
    EXPECT_DOUBLE_EQ(r.latitude, 5251.0073);

    // Event fields keep escapes, stop at the star and are cut at 80 characters.
    ASSERT_TRUE(p.ParseSentence("$GPEVT,B,a^2Cb," + std::string(100, 'z') + ",c*d,e", 1, 0));
    const EventRecord& e = p.Fix().evt;
    EXPECT_EQ(e.type, 'B');
    EXPECT_EQ(e.Field(0), "a^2Cb");
    EXPECT_EQ(e.Field(1), std::string(80, 'z'));
    EXPECT_EQ(e.Field(2), "c");
    EXPECT_EQ(e.Field(3), "");
    EXPECT_EQ(p.Fix().maskB, MaskEvt);
}

TEST(SentenceParser, ZdaYearRuleAndFields) {
    const std::tuple<std::string_view, bool, int> cases[] = {
        {"1990", true, 1990}, {"2100", true, 2100}, {"2101", false, 0}, {"1989", false, 0},
        {"94", true, 1994},   {"499", true, 2399},  {"500", false, 0},  {"14", true, 2014},
        {"0", true, 2000},    {"89", true, 2089},   {"-1", false, 0},   {"", false, 0}};
    for (const auto& [year, accepted, stored] : cases) {
        SentenceParser p;
        const std::string s = "$GPZDA,201530.50,04,07," + std::string(year) + ",-05,30";
        EXPECT_EQ(bool(p.ParseSentence(s, kSecond, 0)), accepted) << s;
        EXPECT_EQ(p.Fix().zda.year, stored) << s;
    }
    SentenceParser p;
    ASSERT_TRUE(p.ParseSentence("$GPZDA,,32,7,2018,14,-60", kSecond, 0));
    const ZdaRecord& z = p.Fix().zda;
    // Day 32 is outside its limit; "%2d" reads -6 of -60, inside the limit.
    EXPECT_EQ(std::tie(z.hour, z.day, z.month, z.zoneHours, z.zoneMinutes),
              std::make_tuple(0, 0, 7, 0, -6));
}

TEST(SentenceParser, VendorSentencesFeedTheSensorValues) {
    SentenceParser p;
    ASSERT_TRUE(p.ParseSentence("$PIXSE,POSITI,45.5,-12.25,0.0*00", 10, 0));
    EXPECT_DOUBLE_EQ(p.Fix().sensors.latitude.value, 45.5);
    EXPECT_TRUE(p.Fix().sensors.altitude.seen);
    EXPECT_FALSE(p.Fix().sensors.depth.seen);
    ASSERT_TRUE(p.ParseSentence("$PIXSE,POSITI,45.5,-12.25,-7.5", 11, 0));
    EXPECT_DOUBLE_EQ(p.Fix().sensors.depth.value, -7.5);

    ASSERT_TRUE(p.ParseSentence("$PIXSE,LOGDVL,1000,0,0", 12, 0));
    EXPECT_FALSE(p.Fix().sensors.soundSpeed.seen);
    ASSERT_TRUE(p.ParseSentence("$PIXSE,LOGDVL,2000,0,0", 13, 0));
    EXPECT_DOUBLE_EQ(p.Fix().sensors.soundSpeed.value, 2000.0);
    ASSERT_TRUE(p.ParseSentence("$PIXSE,LOGDVL,2000.5,0,0", 14, 0));
    EXPECT_DOUBLE_EQ(p.Fix().sensors.soundSpeed.value, 2000.0);
    EXPECT_DOUBLE_EQ(p.Fix().sensors.altitude.value, 2000.5);

    ASSERT_TRUE(p.ParseSentence("$PIXSE,ATITUD,1.5,-2.5", 15, 0));
    EXPECT_DOUBLE_EQ(p.Fix().sensors.pitch.value, -2.5);
    ASSERT_TRUE(p.ParseSentence("$PIXSE,SPEED_,3,4,9", 16, 0));
    EXPECT_DOUBLE_EQ(p.Fix().sensors.speed.value, 5.0);
    ASSERT_TRUE(p.ParseSentence("$TIME__,123045.5", 17, 0));
    EXPECT_EQ(p.Fix().time.minute, 30);
    ASSERT_TRUE(p.ParseSentence("$PIXSE,TIME__,083045.5", 18, 0));
    EXPECT_EQ(p.Fix().time.hour, 0) << "\"%2i\" reads 08 as octal 0";
    ASSERT_TRUE(p.ParseSentence("$PIXSE,DEPIN_,12.5,101010", 19, 0));
    ASSERT_TRUE(p.ParseSentence("$PSIMSSB,1,2,3", 20, 0));
    ASSERT_TRUE(p.ParseSentence("$PSIMSNS,4", 21, 0));
    EXPECT_FALSE(p.ParseSentence("$PIXSE,SPEED_,3,4", 22, 0));
    EXPECT_EQ(p.Fix().maskB, std::uint32_t{MaskPositi | MaskLogdvl | MaskAtitud | MaskSpeed |
                                           MaskTime | MaskDepin | MaskPsimssb | MaskPsimsns});

    ASSERT_TRUE(p.ParseSentence("$GPTWC,101010,24082018,A,52.1,5.2,90,,,,15", 23, 0));
    EXPECT_EQ(p.Fix().twc.year, 2018);
    EXPECT_DOUBLE_EQ(p.Fix().sensors.heading.value, 90.0);
    EXPECT_DOUBLE_EQ(p.Fix().sensors.depth.value, 15.0);
    EXPECT_DOUBLE_EQ(p.Fix().sensors.longitude.value, 5.2);
    EXPECT_FALSE(p.ParseSentence("$GPTWC,,,,,", 24, 0));
}

TEST(SentenceParser, HistoryRingOf30) {
    SentenceParser p;
    EXPECT_EQ(p.History().At(0).Text(), "<== None ==>");
    for (int i = 0; i < 31; ++i) p.ParseSentence("$GPHDT," + std::to_string(i) + ",T\r\n", i, 0, 2);
    EXPECT_EQ(p.History().WriteIndex(), 31u);
    EXPECT_EQ(p.History().At(0).Text(), "OK:$GPHDT,30,T");
    EXPECT_EQ(p.History().At(1).Text(), "OK:$GPHDT,1,T");
    EXPECT_EQ(p.History().At(0).port, 2);
    p.ParseSentence(std::string(300, 'x'), 0, 0);
    EXPECT_EQ(p.History().At(1).Text(), "??:" + std::string(74, 'x'));
}

std::vector<std::uint8_t> NmeaMessage(std::string_view text, std::int32_t seconds) {
    std::vector<std::uint8_t> b(12 + text.size() + 1, 0);
    PutLE<std::int32_t>(b, 0, seconds);
    std::memcpy(b.data() + 12, text.data(), text.size());
    return b;
}

TEST(SentenceParser, MessagesFeedTheFixWithTheirReadingTime) {
    SentenceParser p;
    const TimeValue now{900, 5};
    std::vector<std::uint8_t> container(12, 0);
    PutLE<std::int32_t>(container, 0, 5000);
    auto gll = NmeaMessage("$GPGLL,4916.45,N,12311.12,W", 100);
    p.ProcessMessage({2111, 13, 0, container}, now);
    EXPECT_TRUE(p.ProcessMessage({2002, 13, 1, gll}, now));
    EXPECT_EQ(p.Fix().gll.stamp, 5000) << "the container time wins once";
    EXPECT_TRUE(p.ProcessMessage({2002, 13, 1, gll}, now));
    EXPECT_EQ(p.Fix().gll.stamp, 100);
    EXPECT_EQ(p.LastNmeaTime(), (TimeValue{100, 0}));
    EXPECT_FALSE(p.ProcessMessage({2002, 13, 1, NmeaMessage("$GPGL", 100)}, now));
    EXPECT_EQ(p.History().WriteIndex(), 2u) << "too short to be parsed at all";

    std::vector<std::uint8_t> aux(14, 0);
    PutLE<float>(aux, 0, 7.5f);
    PutLE<std::uint16_t>(aux, 8, 1);
    p.ProcessMessage({8060, 13, 0, aux}, now);
    EXPECT_EQ(p.Fix().sensors.auxiliary1.time, (TimeValue{100, 0}));

    std::vector<std::uint8_t> pr(44, 0);
    PutLE<std::int16_t>(pr, 24, 8192);
    PutLE<std::uint16_t>(pr, 34, 9000);
    PutLE<std::uint32_t>(pr, 36, 0x240);
    p.ProcessMessage({2020, 13, 0, pr}, now);
    EXPECT_DOUBLE_EQ(p.Fix().sensors.pitch.value, 45.0);
    EXPECT_DOUBLE_EQ(p.Fix().sensors.heading.value, 90.0);
    EXPECT_EQ(p.Fix().sensors.heading.time, now) << "a zero stamp takes now";

    std::vector<std::uint8_t> compact(100, 0);
    PutLE<std::uint32_t>(compact, 12, 0xC0);
    PutLE<std::uint8_t>(compact, 16, 1);
    PutLE<float>(compact, 56, 0.0f);
    PutLE<float>(compact, 60, 1.0f);
    p.ProcessMessage({2091, 13, 0, compact}, now);
    EXPECT_NEAR(p.Fix().sensors.course.value, 180.0, 1e-6) << "90 plus the last heading of 90";
    PutLE<std::uint8_t>(compact, 16, 2);
    PutLE<float>(compact, 60, -1.0f);
    p.ProcessMessage({2091, 13, 0, compact}, now);
    EXPECT_NEAR(p.Fix().sensors.course.value, 180.0, 1e-6) << "rule 2 leaves the course";

    p.ProcessMessage({80, 17, 0, {}}, now);
    EXPECT_EQ(p.TraceVersion(), 17);
}

TEST(NavigationStatusText, LinesFollowTheFix) {
    SentenceParser p;
    std::vector<std::string> lines = NavigationStatusLines(p.Fix());
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "GLL:0 GGA:0 RMC:0 ZDA:0 VTG:0 EVT:0");
    p.ParseSentence("$GPGLL,4916.50,S,12311.25,W,225444", 7, 0);
    p.ParseSentence("$GPZDA,201530,04,07,2018,,", 8, 0);
    p.ParseSentence("$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K", 9, 0);
    lines = NavigationStatusLines(p.Fix(), 1, 1);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "GLL:7 GGA:0 RMC:0 ZDA:8 VTG:9 EVT:0");
    EXPECT_EQ(lines[1], "LATLON: LAT 49 16.500000 S LON 123 11.250000 W");
    EXPECT_EQ(lines[2], "TIME: 22:54:44.000000");
    EXPECT_EQ(lines[3], "ZDA: 20:15:30.000000 4/7/2018");
    EXPECT_EQ(lines[4], "VTG: Deg(True:54.700001 Mag34.400002) Speed(km:10.200000 kn:5.500000)");

    // A position no receiver sends is shown as it came rather than split into degrees.
    p.ParseSentence("$GPRMC,225446,A,1e12,N,-12311.25,E,000.5,054.7,191194,020.3,E", 10, 0);
    lines = NavigationStatusLines(p.Fix(), 0, 1);
    EXPECT_EQ(lines[1], "LATLON: LAT 0 1000000000000.000000 N LON -123 -11.250000 E");
}

}  // namespace
}  // namespace halvo
