// Filled sample records: every registered class that comes up from the
// stack, and a class of every shape, survives the JSON round trip once
// filled (the codec check that grows with each family's records).
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "stack/sim/samples.h"
#include "tests/support/in_process.h"

using velar_sim::Json;

namespace {

#define VELAR_FIELDS_SampleInner (mName, std::string), (mCode, int)
struct SampleInner {
    VELAR_FIELDS(VELAR_FIELDS_SampleInner)
};

#define VELAR_FIELDS_SampleOuter (mInner, SampleInner*), (mTags, std::vector<std::string>)
struct SampleOuter {
    ~SampleOuter() { delete mInner; }
    VELAR_FIELDS(VELAR_FIELDS_SampleOuter)
};

#define VELAR_FIELDS_SampleShapesData                                                             \
    (mFlag, bool), (mCount, unsigned int), (mText, std::string), (mRatio, float),                 \
        (mList, std::vector<std::string>), (mSet, std::set<int>),                                 \
        (mMap, std::map<std::string, int>), (mByNumber, std::map<int, SampleInner>),              \
        (mPtr, SampleOuter*), (mUnique, std::unique_ptr<SampleInner>),                            \
        (mPtrs, std::vector<SampleInner*>), (mNumbers, std::vector<int>*),                        \
        (mPair, std::pair<int, std::string>), (mTuple, std::tuple<bool, long long, std::string>), \
        (mGrid, std::vector<std::vector<int>>)
class SampleShapesData : public ImsData {
public:
    ~SampleShapesData() override {
        delete mPtr;
        delete mNumbers;
        for (auto* p : mPtrs) delete p;
    }
    VELAR_FIELDS(VELAR_FIELDS_SampleShapesData)
};

}  // namespace

namespace velar_sim::shape {
VELAR_SHAPE_FIELDS(SampleInner)
VELAR_SHAPE_FIELDS(SampleOuter)
VELAR_SHAPE_FIELDS(SampleShapesData)
}  // namespace velar_sim::shape

VELAR_SIM_CLASS(SampleShapesData);

namespace {

// Whether a value holds something: no null, zero, false, empty string or
// empty container anywhere inside it. A sample that leaves something empty
// would let the codec drop that shape unnoticed.
bool filled(const Json& j) {
    if (j.is_structured()) {
        if (j.empty()) return false;
        for (const Json& v : j)
            if (!filled(v)) return false;
        return true;
    }
    return !(j.is_null() || j == 0 || j == false || j == "");
}

}  // namespace

// Every class a family registered (and the one above, with every shape the
// field lists take) gets a sample with every field filled, and what the
// codec writes it reads back unchanged.
TEST(SampleRecords, EveryRegisteredClassSurvivesTheRoundTripFilled) {
    int checked = 0;
    for (const std::string& name : velar_sim::classNames()) {
        const velar_sim::ClassInfo* info = velar_sim::findClass(name);
        if (info == nullptr || info->decode == nullptr) continue;
        std::string error;
        Json sample = velar_sim::sampleRecord(name, 7, {}, &error);
        ASSERT_FALSE(sample.is_null()) << name << ": " << error;
        const Json fields = sample.value("fields", Json::object());
        for (const auto& [field, value] : fields.items())
            EXPECT_TRUE(filled(value)) << name << "." << field << " = " << value.dump();
        std::unique_ptr<ImsData> record(velar_sim::recordFromJson(sample, &error));
        ASSERT_TRUE(record) << name << ": " << error;
        EXPECT_EQ(velar_sim::recordToJsonUp(record.get()), sample) << name;
        checked++;
    }
    EXPECT_GE(checked, 3);
}

// Every notification row names the class its record comes up in, so that
// tools can build a representative notification of every id; a filled record
// of that class goes through its handler. A wrong class is a bad cast that
// the sanitizer build reports.
TEST(SampleRecords, EveryNotificationIdHasItsClassAndItsHandlerTakesIt) {
    ImsFillDispatchMaps();
    for (size_t i = 1; i < s_notificationCount; i++) {
        const NotifyInfo& row = s_notifications[i];
        const char* cls = velar_sim::notifyClass(row.notifyNumber);
        ASSERT_NE(cls, nullptr) << row.notifyNumber;
        std::string error;
        Json sample = velar_sim::sampleRecord(cls, row.notifyNumber, {}, &error);
        std::unique_ptr<ImsData> record(velar_sim::recordFromJson(sample, &error));
        ASSERT_TRUE(record) << row.notifyNumber << " " << cls << ": " << error;
        imsCommonStruc::Notify notify;
        EXPECT_EQ(row.notifyFunction(notify, record.get()), 0) << row.notifyNumber;
    }
}
