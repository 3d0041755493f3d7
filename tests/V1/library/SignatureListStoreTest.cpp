#include "V1/library/SignatureListStore.h"

#include <gtest/gtest.h>

namespace inkory
{

TEST(SignatureListStore, TheCopySurvivesWithoutEntriesThatNameNoFile)
{
    const auto copy = SignatureListStore::copyFromBytes(
        R"({"IMAGE_STAMP_URL_LIST": ["file:///a%20b.png", "", 1, null, ["c"]], "STAMPS_SANDBOX_MIGRAION_DONE": true})");
    ASSERT_TRUE(copy.has_value());
    EXPECT_EQ(copy->contents.urls, QStringList{u"file:///a%20b.png"_qs});
    EXPECT_TRUE(copy->contents.migrationDone);
    EXPECT_FALSE(copy->isNewerThanSettings);
    EXPECT_EQ(SignatureListStore::copyFromBytes(SignatureListStore::bytesOfCopy(*copy)), copy);
    EXPECT_FALSE(SignatureListStore::copyFromBytes(R"({"IMAGE_STAMP_URL_LIST": []})").has_value());
}

} // namespace inkory
