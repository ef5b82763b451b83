// Filled sample records: every declared shape gets a value, and every
// registered class that comes up from the stack survives the JSON round trip
// once filled (the codec check that grows with each family's records).
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "stack/sim/samples.h"

using velar_sim::Json;

namespace {

struct SampleInner {
    VELAR_FIELDS((mName, std::string), (mCode, int))
};

struct SampleOuter {
    ~SampleOuter() { delete mInner; }
    VELAR_FIELDS((mInner, SampleInner*), (mTags, std::vector<std::string>))
};

class SampleShapesData : public ImsData {
public:
    ~SampleShapesData() override {
        delete mPtr;
        delete mNumbers;
        for (auto* p : mPtrs) delete p;
    }
    VELAR_FIELDS((mFlag, bool), (mCount, unsigned int), (mText, std::string), (mRatio, float),
                 (mList, std::vector<std::string>), (mSet, std::set<int>),
                 (mMap, std::map<std::string, int>), (mByNumber, std::map<int, SampleInner>),
                 (mPtr, SampleOuter*), (mUnique, std::unique_ptr<SampleInner>),
                 (mPtrs, std::vector<SampleInner*>), (mNumbers, std::vector<int>*),
                 (mPair, std::pair<int, std::string>),
                 (mTuple, std::tuple<bool, long long, std::string>),
                 (mGrid, std::vector<std::vector<int>>))
};

}  // namespace

VELAR_SIM_CLASS(SampleShapesData);

TEST(SampleRecords, EveryShapeIsFilled) {
    std::string error;
    Json got = velar_sim::sampleRecord("SampleShapesData", 42, {6, 2}, &error);
    ASSERT_FALSE(got.is_null()) << error;
    // Scalars non-zero; strings of six bytes led by their entry's number;
    // containers two entries; every held object present with its fields.
    Json expected = Json::parse(R"({"class":"SampleShapesData","id":42,"fields":{
        "mFlag":true,"mCount":3,"mText":"0-mTex","mRatio":1.5,
        "mList":["0-mLis","1-mLis"],"mSet":[3,4],
        "mMap":{"0-mMap":3,"1-mMap":4},
        "mByNumber":{"3":{"mName":"0-mNam","mCode":3},"4":{"mName":"1-mNam","mCode":4}},
        "mPtr":{"mInner":{"mName":"0-mNam","mCode":3},"mTags":["0-mTag","1-mTag"]},
        "mUnique":{"mName":"0-mNam","mCode":3},
        "mPtrs":[{"mName":"0-mNam","mCode":3},{"mName":"1-mNam","mCode":4}],
        "mNumbers":[3,4],
        "mPair":[3,"0-mPai"],"mTuple":[true,3,"0-mTup"],
        "mGrid":[[3,4],[4,5]]}})");
    EXPECT_EQ(got, expected) << got.dump();
}

TEST(SampleRecords, ClassesThatCannotComeUpAreRefused) {
    struct Case {
        const char* name;
        const char* className;
        const char* error;
    } cases[] = {
        {"unknown", "NoSuchData", "unknown class NoSuchData"},
        {"only goes down", "CallSessionId", "class CallSessionId is not handed up"},
    };
    for (const auto& c : cases) {
        std::string error;
        EXPECT_TRUE(velar_sim::sampleRecord(c.className, 1, {}, &error).is_null()) << c.name;
        EXPECT_EQ(error, c.error) << c.name;
    }
}

// What the codec writes it reads back unchanged, for a filled record of
// every class a family registered.
TEST(SampleRecords, EveryRegisteredClassSurvivesTheRoundTripFilled) {
    int checked = 0;
    for (const std::string& name : velar_sim::classNames()) {
        const velar_sim::ClassInfo* info = velar_sim::findClass(name);
        if (info == nullptr || info->decode == nullptr) continue;
        std::string error;
        Json sample = velar_sim::sampleRecord(name, 7, {}, &error);
        ASSERT_FALSE(sample.is_null()) << name << ": " << error;
        std::unique_ptr<ImsData> record(velar_sim::recordFromJson(sample, &error));
        ASSERT_TRUE(record) << name << ": " << error;
        EXPECT_EQ(velar_sim::recordToJsonUp(record.get()), sample) << name;
        checked++;
    }
    EXPECT_GE(checked, 3);
}
