// Settings that belong to no single user agent: one record, one setter for
// each section the client sent.
#include <map>
#include <string>

#include "handlers/common/take_fields.h"
#include "handlers/handlers.h"

namespace {

// A key that comes again keeps its first value.
template <class Pairs>
std::map<std::string, std::string> firstKeyWins(const Pairs& pairs) {
    std::map<std::string, std::string> map;
    for (const auto& pair : pairs) map.emplace(pair.key(), pair.value());
    return map;
}

}  // namespace

IMS_DISPATCH(DispatchUpdateCommonConfig) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestupdatecommonconfig());
    auto* record = new ConfigData(request.reqid());

    // The stack takes the sections in this order, which is not the wire's.
    // A section left out keeps what the constructor made: its setter is not
    // called with defaults.
    if (body.has_xdmconfig()) {
        auto& xdm = *body.mutable_xdmconfig();
        record->SetXDMConfig(xdm.enabled(), TAKE_STRING(xdm, httpusername),
                             TAKE_STRING(xdm, httppasswd), TAKE_STRING(xdm, xcaprooturi),
                             TAKE_STRING(xdm, authproxyserver),
                             static_cast<int>(xdm.authproxyport()), TAKE_STRING(xdm, bsfserver),
                             static_cast<int>(xdm.bsfserverport()), TAKE_STRING(xdm, useragent),
                             static_cast<int>(xdm.mno()), TAKE_STRING(xdm, impu),
                             TAKE_STRING(xdm, impi), xdm.enablegba());
    }
    if (body.has_regiconfig()) {
        auto& regi = *body.mutable_regiconfig();
        record->SetRegiConfig(TAKE_STRING(regi, imei), TAKE_STRING(regi, supported),
                              TAKE_STRING(regi, privacy));
    }
    if (body.has_ssconfig()) {
        auto& ss = *body.mutable_ssconfig();
        record->SetSSConfig(ss.callwaiting(), ss.supporttls(), ss.ssmode(), ss.sscbmode(),
                            static_cast<int>(ss.mediatype()), static_cast<int>(ss.ipversion()),
                            ss.supportmultidns(), ss.supportretry(), ss.supportcpelement(),
                            ss.supportsselement(), ss.supportsimservsretry(),
                            firstKeyWins(ss.ruleid()));
    }
    if (body.has_callconfig()) {
        record->SetCallConfig(body.callconfig().ttysessionrequired());
    }
    if (body.has_srvccconfig()) {
        record->SetSrvccConfig(static_cast<int>(body.srvccconfig().version()));
    }
    if (body.has_rcsconfig()) {
        auto& rcs = *body.mutable_rcsconfig();
        ConfigData::RcsConfig config;
        config.rcsFtChunkSize = rcs.rcsftchunksize();
        config.rcsIshChunkSize = rcs.rcsishchunksize();
        config.confUri = TAKE_STRING(rcs, confuri);
        config.isMsrpCema = rcs.ismsrpcema();
        config.downloadsPath = TAKE_STRING(rcs, downloadspath);
        config.isConfSubscribeEnabled = rcs.isconfsubscribeenabled();
        config.isClosedGroupChat = rcs.isclosedgroupchat();
        config.exploderUri = TAKE_STRING(rcs, exploderuri);
        config.pagerModeSizeLimit = rcs.pagermodesizelimit();
        record->SetRcsConfig(config);
    }
    if (body.has_featureconfig()) {
        record->SetFeatureConfig(firstKeyWins(body.featureconfig().trellfeature()));
    }

    s_velar->OnRequest(token, record);
}
