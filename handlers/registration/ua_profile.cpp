// User agents: creation with the whole profile, and deletion.
#include <string>
#include <vector>

#include "handlers/common/helpers.h"

IMS_DISPATCH(DispatchUACreation) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestuacreation());

    // authName, regdomain, isSigComp, secureClientPort, secureServerPort,
    // selfPort, isSubscribeRegEvent and isKeepAlive are not the stack's
    // business: the profile has no place for them.
    auto* record = new UAProfileData(
        request.reqid(), static_cast<int>(body.profileid()), body.interface(),
        static_cast<int>(body.netid()), body.pdn(), body.impu(), body.impi(), body.password(),
        body.domain(), body.issipoutbound(), static_cast<int>(body.qparam()), body.transtype(),
        body.isemergencysupport(), body.isipsec(), body.issipcompactheader(), body.encralg(),
        body.authalg(), body.registeralgo(), body.prefid(), body.remoteuritype(),
        body.isprecondenabled(), body.isprecondinitialsendrecv(), body.sessionexpires(),
        static_cast<int>(body.minse()), body.sessionrefresher(),
        static_cast<unsigned int>(body.mno()), body.useragent(), body.displayname(),
        body.contactdisplayname(), body.instanceid(), body.realm(), body.immsgtech(),
        body.issoftphoneenabled(), static_cast<int>(body.msssize()),
        static_cast<int>(body.ringbacktimer()), static_cast<int>(body.ringingtimer()),
        static_cast<int>(body.sipmobility()), body.isenablegruu(),
        static_cast<int>(body.audioenginetype()), body.curpani(), body.isvceconfigenabled(),
        body.isgcfconfigenabled(), body.isnsdsserviceenabled(), body.wifipreconditionenabled(),
        body.ismsrpbearerused(), static_cast<int>(body.subscribertimer()), body.issubscribereg(),
        body.usekeepalive(), body.msrptranstype(), body.hostname(),
        helpers::toVector(body.servicelist()), helpers::toTags(body.featuretaglist()));

    record->SetTimer(body.timer1(), body.timer2(), body.timer4(), body.timera(), body.timerb(),
                     body.timerc(), body.timerd(), body.timere(), body.timerf(), body.timerg(),
                     body.timerh(), body.timeri(), body.timerj(), body.timerk(), body.timerts());

    if (body.has_mediaconfig()) {
        // The four strength tags are the client's own; the stack takes none.
        const auto& m = body.mediaconfig();
        record->SetMediaConfig(
            m.audioport(), m.isamroctecalign(), m.audiocodec(), m.dtmfmode(), m.audioas(),
            m.audiors(), m.audiorr(), m.amrmodechangecapability(), m.amrmaxred(), m.amrmode(),
            m.amrwbmode(), m.amrpayload(), m.amrbepayload(), m.amrwbpayload(), m.amrbewbpayload(),
            m.amropenpayload(), m.dtmfpayload(), m.dtmfwbpayload(), m.ptime(), m.maxtime(),
            m.videocodec(), m.videoport(), m.framerate(), m.displayformat(), m.packetizationmode(),
            m.h264vgapayload(), m.h264vgalpayload(), m.h264qvgapayload(), m.h264qvgalpayload(),
            m.h264cifpayload(), m.h264ciflpayload(), m.h263qcifpayload(), m.videoas(), m.videors(),
            m.videorr(), m.audioavpf(), m.audiosrtp(), m.videoavpf(), m.videosrtp(),
            m.videocapabilities(), m.enablescr(), static_cast<int>(m.rtptimeout()),
            static_cast<int>(m.rtcptimeout()), m.audiortcpxr(), m.videortcpxr(), m.enableevscodec(),
            m.evsdiscontinuoustransmission(), m.evsdtxrecv(), m.evsheaderfull(), m.evsmodeswitch(),
            m.evschannelsend(), m.evschannelrecv(), m.evschannelawarereceive(),
            m.evscodecmoderequest(), m.evsbitratesend(), m.evsbitratereceive(),
            m.evsbandwidthsend(), m.evsbandwidthreceive(), static_cast<int>(m.evspayload()),
            m.evsdefaultbandwidth(), m.evsdefaultbitrate(), m.enablertcponactivecall(),
            m.enableavsync());
    }

    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchUADeletion) {
    IMS_LOGI("%s()", __func__);
    const auto body = TakeBody(request.mutable_requestuadeletion());
    s_velar->OnRequest(token,
                       new PrimitiveData<int>(request.reqid(), static_cast<int>(body.handle())));
}
