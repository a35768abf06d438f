// MIME types by the keys that a name holds.
#include <cstddef>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

#include "kvos/naming.h"

namespace {

std::string typeOf(const char* name) { return kvGetMimeType(name); }

TEST(Mime, AnEmptyNameMatchesNothing) {
    EXPECT_EQ(typeOf(""), "application/xml");
    EXPECT_EQ(typeOf(nullptr), "application/xml");
}

TEST(Mime, TheCaseOfAKeyCounts) {
    EXPECT_EQ(typeOf("CLIP.WAV"), "application/xml");
    EXPECT_EQ(typeOf("CLIP.wav"), "audio/wave");
    EXPECT_EQ(typeOf("film.mkv"), "application/xml");
}

TEST(Mime, TheFavouredRowsWinOverTheirSecondOnes) {
    EXPECT_EQ(typeOf("a.3gpp"), "audio/3gpp");
    EXPECT_EQ(typeOf("a.jpm"), "video/jpm");
    EXPECT_EQ(typeOf("a.mp3"), "audio/mp3");
    EXPECT_EQ(typeOf("a.rtf"), "text/rtf");
    EXPECT_EQ(typeOf("a.wav"), "audio/wave");
    EXPECT_EQ(typeOf("a.xml"), "text/xml");
}

TEST(Mime, AKeyCountsWhereverItStands) {
    EXPECT_EQ(typeOf("clip.mov.wav"), "audio/wave");
    EXPECT_EQ(typeOf("wav/clip.mov"), "audio/wave");
    EXPECT_EQ(typeOf("clip.mov"), "video/quicktime");
    EXPECT_EQ(typeOf("mov"), "video/quicktime");
    EXPECT_EQ(typeOf("cactus.mov"), "application/pkix-attr-cert");  // "ac"
    EXPECT_EQ(typeOf("image.png"), "application/mathematica");      // "ma"
}

TEST(Mime, ShortKeysHideLongerOnesBehindThem) {
    for (const char* name : {"clip.ts", "clip.txt", "scan.tiff", "t"}) EXPECT_EQ(typeOf(name), "text/troff") << name;
    EXPECT_EQ(typeOf("a.json"), "text/javascript");        // "js"
    EXPECT_EQ(typeOf("a.aif"), "application/postscript");  // "ai"
    EXPECT_EQ(typeOf("clip.rtin"), "text/plain");          // "in"
    EXPECT_EQ(typeOf("clip.xmp"), "audio/xm");             // "xm"
}

TEST(Mime, TheRowsAddedBehindTheBodyAreInTheTable) {
    EXPECT_EQ(std::string_view(kvStaticMimeList[350].pKey), "rtin");
    EXPECT_EQ(std::string_view(kvStaticMimeList[350].pType), "application/octet-stream");
    EXPECT_EQ(std::string_view(kvStaticMimeList[351].pKey), "xmp");
    EXPECT_EQ(std::string_view(kvStaticMimeList[351].pType), "application/xml");
}

TEST(Mime, TheTableHasItsRowsInTheirOrder) {
    ASSERT_EQ(std::size(kvStaticMimeList), 352u);
    std::string keys;
    for (const kvMimeRow& row : kvStaticMimeList) keys += (keys.empty() ? "" : " ") + std::string(row.pKey);
    EXPECT_EQ(keys,
              "3gpp jpm mp3 rtf wav xml 3g2 3gp 3gpp ack ackr acks ac adp ai apng appcache asc atom atomcat atomsvc "
              "au aw bdoc bin bmp bpk buffer ccxml cdmia cdmic cdmid cdmio cdmiq cer cgm class coffee conf cpt crl "
              "css csv cu davmount dbk deb def deploy disposition-notification dist distz dll dmg dms doc dot drle "
              "dssc dtd dump ear ecma elc emf eml emma eps epub es exe exi exr ez fits g3 gbr geojson gif glb gltf "
              "gml gpx gram grxml gxf gz h261 h263 h264 heic heics heif heifs hjson hlp hqx htm html ics ief ifb "
              "iges igs img in ini ink inkml ipfix iso jade jar jls jp2 jpe jpeg jpf jpg jpg2 jpgm jpgv jpm jpx js "
              "json json5 jsonld jsonml jsx kar ktx less list litcoffee log lostxml lrf m1v m21 m2a m2v m3a m4a m4p "
              "ma mads man manifest map mar markdown mathml mb mbox md me mesh meta4 metalink mets mft mid midi "
              "mime mj2 mjp2 mjs mml mods mov mp2 mp21 mp2a mp3 mp4 mp4a mp4s mp4v mpd mpe mpeg mpg mpg4 mpga mrc "
              "mrcx ms mscml msh msi msm msp mxf mxml n3 nb oda oga ogg ogv ogx omdoc onepkg onetmp onetoc onetoc2 "
              "opf otf owl oxps p10 p7c p7m p7s p8 pdf pfr pgp pkg pki pkipath pls png prf ps pskcxml qt raml rdf "
              "rif rl rld rmi rnc rng roa roff rq rs rsd rss rtf rtx s3m sbml scq scs sdp ser setpay setreg sgi sgm "
              "sgml shex shf shtml sig sil silo slim slm smi smil snd so spp spq spx sru srx ssdl ssml stk styl "
              "stylus svg svgz t t38 tei teicorpus text tfi tfx tif tiff tr ts tsd tsv ttc ttf ttl txt u8dsn u8hdr "
              "u8mdn u8msg uri uris urls vcard vrml vtt vxml war wasm wav weba webm webmanifest webp wgt wmf woff "
              "woff2 wrl wsdl wspolicy x3d x3db x3dbz x3dv x3dvz x3dz xaml xdf xdssc xenc xer xht xhtml xhvml xm "
              "xml xop xpl xsd xsl xslt xspf xvm xvml yaml yang yin yml zip rtin xmp");
}

TEST(Mime, OnlyTheFavouredKeysOccurTwice) {
    std::map<std::string, int> times;
    for (const kvMimeRow& row : kvStaticMimeList) ++times[row.pKey];
    std::string twice;
    for (const auto& [key, count] : times) {
        if (count != 1) twice += key + " ";
    }
    EXPECT_EQ(twice, "3gpp jpm mp3 rtf wav xml ");
}

TEST(Mime, EveryTypeHasTheFormOfOne) {
    for (const kvMimeRow& row : kvStaticMimeList) {
        const std::string_view type = row.pType;
        const std::size_t slash = type.find('/');
        ASSERT_NE(slash, std::string_view::npos) << row.pKey;
        EXPECT_TRUE(slash > 0 && slash + 1 < type.size() && type.find('/', slash + 1) == std::string_view::npos)
            << type;
        EXPECT_EQ(type.find_first_of(" \t\r\n;"), std::string_view::npos) << type;
    }
}

TEST(Mime, EveryNameGetsTheFirstRowThatItHolds) {
    for (const kvMimeRow& wanted : kvStaticMimeList) {
        const std::string name = std::string("/D/") + wanted.pKey;
        const char* expected = "application/xml";
        for (const kvMimeRow& row : kvStaticMimeList) {
            if (name.find(row.pKey) == std::string::npos) continue;
            expected = row.pType;
            break;
        }
        EXPECT_EQ(kvGetMimeType(name.c_str()), expected) << name;
    }
}

}  // namespace
