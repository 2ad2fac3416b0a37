// SPDX-License-Identifier: Apache-2.0
// A type of as many members as can be described.

#include <VorlanFoundation/Platform/JSONDecoder.h>
#include <VorlanFoundation/Platform/JSONEncoder.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace vorlan;

namespace {

// clang-format off
struct Wide {
    int m00 = 0, m01 = 0, m02 = 0, m03 = 0, m04 = 0, m05 = 0, m06 = 0, m07 = 0;
    int m08 = 0, m09 = 0, m0a = 0, m0b = 0, m0c = 0, m0d = 0, m0e = 0, m0f = 0;
    int m10 = 0, m11 = 0, m12 = 0, m13 = 0, m14 = 0, m15 = 0, m16 = 0, m17 = 0;
    int m18 = 0, m19 = 0, m1a = 0, m1b = 0, m1c = 0, m1d = 0, m1e = 0, m1f = 0;
    int m20 = 0, m21 = 0, m22 = 0, m23 = 0, m24 = 0, m25 = 0, m26 = 0, m27 = 0;
    int m28 = 0, m29 = 0, m2a = 0, m2b = 0, m2c = 0, m2d = 0, m2e = 0, m2f = 0;
    int m30 = 0, m31 = 0, m32 = 0, m33 = 0, m34 = 0, m35 = 0, m36 = 0, m37 = 0;
    int m38 = 0, m39 = 0, m3a = 0, m3b = 0, m3c = 0, m3d = 0, m3e = 0, m3f = 0;
    int m40 = 0, m41 = 0, m42 = 0, m43 = 0, m44 = 0, m45 = 0, m46 = 0, m47 = 0;
    int m48 = 0, m49 = 0, m4a = 0, m4b = 0, m4c = 0, m4d = 0, m4e = 0, m4f = 0;
    int m50 = 0, m51 = 0, m52 = 0, m53 = 0, m54 = 0, m55 = 0, m56 = 0, m57 = 0;
    int m58 = 0, m59 = 0, m5a = 0, m5b = 0, m5c = 0, m5d = 0, m5e = 0, m5f = 0;
    int m60 = 0, m61 = 0, m62 = 0, m63 = 0, m64 = 0, m65 = 0, m66 = 0, m67 = 0;
    int m68 = 0, m69 = 0, m6a = 0, m6b = 0, m6c = 0, m6d = 0, m6e = 0, m6f = 0;
    int m70 = 0, m71 = 0, m72 = 0, m73 = 0, m74 = 0, m75 = 0, m76 = 0, m77 = 0;
    int m78 = 0, m79 = 0, m7a = 0, m7b = 0, m7c = 0, m7d = 0, m7e = 0, m7f = 0;
    int m80 = 0, m81 = 0, m82 = 0, m83 = 0, m84 = 0, m85 = 0, m86 = 0, m87 = 0;
    int m88 = 0, m89 = 0, m8a = 0, m8b = 0, m8c = 0, m8d = 0, m8e = 0, m8f = 0;
    int m90 = 0, m91 = 0, m92 = 0, m93 = 0, m94 = 0, m95 = 0, m96 = 0, m97 = 0;
    int m98 = 0, m99 = 0, m9a = 0, m9b = 0, m9c = 0, m9d = 0, m9e = 0, m9f = 0;
    int ma0 = 0, ma1 = 0, ma2 = 0, ma3 = 0, ma4 = 0, ma5 = 0, ma6 = 0, ma7 = 0;
    int ma8 = 0, ma9 = 0, maa = 0, mab = 0, mac = 0, mad = 0, mae = 0, maf = 0;
    int mb0 = 0, mb1 = 0, mb2 = 0, mb3 = 0, mb4 = 0, mb5 = 0, mb6 = 0, mb7 = 0;
    int mb8 = 0, mb9 = 0, mba = 0, mbb = 0, mbc = 0, mbd = 0, mbe = 0, mbf = 0;
    int mc0 = 0, mc1 = 0, mc2 = 0, mc3 = 0, mc4 = 0, mc5 = 0, mc6 = 0, mc7 = 0;
    int mc8 = 0, mc9 = 0, mca = 0, mcb = 0, mcc = 0, mcd = 0, mce = 0, mcf = 0;
    int md0 = 0, md1 = 0, md2 = 0, md3 = 0, md4 = 0, md5 = 0, md6 = 0, md7 = 0;
    int md8 = 0, md9 = 0, mda = 0, mdb = 0, mdc = 0, mdd = 0, mde = 0, mdf = 0;
    int me0 = 0, me1 = 0, me2 = 0, me3 = 0, me4 = 0, me5 = 0, me6 = 0, me7 = 0;
    int me8 = 0, me9 = 0, mea = 0, meb = 0, mec = 0, med = 0, mee = 0, mef = 0;
    int mf0 = 0, mf1 = 0, mf2 = 0, mf3 = 0, mf4 = 0, mf5 = 0, mf6 = 0, mf7 = 0;
    int mf8 = 0, mf9 = 0, mfa = 0, mfb = 0, mfc = 0, mfd = 0, mfe = 0, mff = 0;
};
VORLAN_CODABLE(Wide,
    m00, m01, m02, m03, m04, m05, m06, m07, m08, m09, m0a, m0b, m0c, m0d, m0e, m0f,
    m10, m11, m12, m13, m14, m15, m16, m17, m18, m19, m1a, m1b, m1c, m1d, m1e, m1f,
    m20, m21, m22, m23, m24, m25, m26, m27, m28, m29, m2a, m2b, m2c, m2d, m2e, m2f,
    m30, m31, m32, m33, m34, m35, m36, m37, m38, m39, m3a, m3b, m3c, m3d, m3e, m3f,
    m40, m41, m42, m43, m44, m45, m46, m47, m48, m49, m4a, m4b, m4c, m4d, m4e, m4f,
    m50, m51, m52, m53, m54, m55, m56, m57, m58, m59, m5a, m5b, m5c, m5d, m5e, m5f,
    m60, m61, m62, m63, m64, m65, m66, m67, m68, m69, m6a, m6b, m6c, m6d, m6e, m6f,
    m70, m71, m72, m73, m74, m75, m76, m77, m78, m79, m7a, m7b, m7c, m7d, m7e, m7f,
    m80, m81, m82, m83, m84, m85, m86, m87, m88, m89, m8a, m8b, m8c, m8d, m8e, m8f,
    m90, m91, m92, m93, m94, m95, m96, m97, m98, m99, m9a, m9b, m9c, m9d, m9e, m9f,
    ma0, ma1, ma2, ma3, ma4, ma5, ma6, ma7, ma8, ma9, maa, mab, mac, mad, mae, maf,
    mb0, mb1, mb2, mb3, mb4, mb5, mb6, mb7, mb8, mb9, mba, mbb, mbc, mbd, mbe, mbf,
    mc0, mc1, mc2, mc3, mc4, mc5, mc6, mc7, mc8, mc9, mca, mcb, mcc, mcd, mce, mcf,
    md0, md1, md2, md3, md4, md5, md6, md7, md8, md9, mda, mdb, mdc, mdd, mde, mdf,
    me0, me1, me2, me3, me4, me5, me6, me7, me8, me9, mea, meb, mec, med, mee, mef,
    mf0, mf1, mf2, mf3, mf4, mf5, mf6, mf7, mf8, mf9, mfa, mfb, mfc, mfd, mfe, mff)
// clang-format on

using Members = std::map<std::string, int>;

Members numberedMembers() {
    Members members;
    for (int i = 0; i < 256; ++i) members[{'m', "0123456789abcdef"[i / 16], "0123456789abcdef"[i % 16]}] = i;
    return members;
}

} // namespace

TEST(CodableWideType, HasEachMemberUnderItsName) {
    const std::string text = JSONEncoder().encodeText(numberedMembers());
    const auto wide = JSONDecoder().decode<Wide>(text);
    EXPECT_EQ(wide.m00, 0);
    EXPECT_EQ(wide.m01, 1);
    EXPECT_EQ(wide.m7f, 127);
    EXPECT_EQ(wide.m80, 128);
    EXPECT_EQ(wide.mff, 255);
    EXPECT_EQ(JSONDecoder().decode<Members>(JSONEncoder().encode(wide)), numberedMembers());
}

TEST(CodableWideType, IsWrittenInTheOrderOfItsDeclaration) {
    const std::string text = JSONEncoder().encodeText(numberedMembers());
    EXPECT_EQ(JSONEncoder().encodeText(JSONDecoder().decode<Wide>(text)), text);
}

TEST(CodableWideType, MayHaveItsMembersInAnyOrder) {
    std::string backwards;
    for (const auto& [name, value] : numberedMembers())
        backwards = "\"" + name + "\":" + std::to_string(value) + (backwards.empty() ? "" : ",") + backwards;
    const auto wide = JSONDecoder().decode<Wide>("{" + backwards + "}");
    EXPECT_EQ(JSONDecoder().decode<Members>(JSONEncoder().encode(wide)), numberedMembers());
}

TEST(CodableWideType, LacksNoneOfItsMembersUnseen) {
    for (const auto& [name, value] : numberedMembers()) {
        auto members = numberedMembers();
        members.erase(name);
        try {
            static_cast<void>(JSONDecoder().decode<Wide>(JSONEncoder().encode(members)));
            ADD_FAILURE() << name;
        } catch (const JSONError& error) {
            EXPECT_EQ(error.path(), "$." + name);
        }
    }
}
