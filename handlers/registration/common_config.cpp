// Settings that belong to no single user agent: one record, one setter for
// each section the client sent.
#include <map>
#include <string>

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
    const auto body = TakeBody(request.mutable_requestupdatecommonconfig());
    auto* record = new ConfigData(request.reqid());

    // The stack takes the sections in this order, which is not the wire's.
    // A section left out keeps what the constructor made: its setter is not
    // called with defaults.
    if (body.has_xdmconfig()) {
        const auto& xdm = body.xdmconfig();
        record->SetXDMConfig(xdm.enabled(), xdm.httpusername(), xdm.httppasswd(), xdm.xcaprooturi(),
                             xdm.authproxyserver(), static_cast<int>(xdm.authproxyport()),
                             xdm.bsfserver(), static_cast<int>(xdm.bsfserverport()),
                             xdm.useragent(), static_cast<int>(xdm.mno()), xdm.impu(), xdm.impi(),
                             xdm.enablegba());
    }
    if (body.has_regiconfig()) {
        const auto& regi = body.regiconfig();
        record->SetRegiConfig(regi.imei(), regi.supported(), regi.privacy());
    }
    if (body.has_ssconfig()) {
        const auto& ss = body.ssconfig();
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
        const auto& rcs = body.rcsconfig();
        ConfigData::RcsConfig config;
        config.rcsFtChunkSize = rcs.rcsftchunksize();
        config.rcsIshChunkSize = rcs.rcsishchunksize();
        config.confUri = rcs.confuri();
        config.isMsrpCema = rcs.ismsrpcema();
        config.downloadsPath = rcs.downloadspath();
        config.isConfSubscribeEnabled = rcs.isconfsubscribeenabled();
        config.isClosedGroupChat = rcs.isclosedgroupchat();
        config.exploderUri = rcs.exploderuri();
        config.pagerModeSizeLimit = rcs.pagermodesizelimit();
        record->SetRcsConfig(config);
    }
    if (body.has_featureconfig()) {
        record->SetFeatureConfig(firstKeyWins(body.featureconfig().trellfeature()));
    }

    s_velar->OnRequest(token, record);
}
