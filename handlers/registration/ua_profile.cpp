// User agents: creation with the whole profile, and deletion.
#include <string>
#include <vector>

#include "handlers/common/helpers.h"
#include "handlers/common/take_fields.h"

IMS_DISPATCH(DispatchUACreation) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestuacreation());

    // authName, regdomain, isSigComp, secureClientPort, secureServerPort,
    // selfPort, isSubscribeRegEvent and isKeepAlive are not the stack's
    // business: the profile has no place for them.
    auto* record = new UAProfileData(
        request.reqid(), static_cast<int>(body.profileid()), TAKE_STRING(body, interface),
        static_cast<int>(body.netid()), TAKE_STRING(body, pdn), TAKE_STRING(body, impu),
        TAKE_STRING(body, impi), TAKE_STRING(body, password), TAKE_STRING(body, domain),
        body.issipoutbound(), static_cast<int>(body.qparam()), TAKE_STRING(body, transtype),
        body.isemergencysupport(), body.isipsec(), body.issipcompactheader(),
        TAKE_STRING(body, encralg), TAKE_STRING(body, authalg), TAKE_STRING(body, registeralgo),
        TAKE_STRING(body, prefid), TAKE_STRING(body, remoteuritype), body.isprecondenabled(),
        body.isprecondinitialsendrecv(), body.sessionexpires(), static_cast<int>(body.minse()),
        TAKE_STRING(body, sessionrefresher), static_cast<unsigned int>(body.mno()),
        TAKE_STRING(body, useragent), TAKE_STRING(body, displayname),
        TAKE_STRING(body, contactdisplayname), TAKE_STRING(body, instanceid),
        TAKE_STRING(body, realm), TAKE_STRING(body, immsgtech), body.issoftphoneenabled(),
        static_cast<int>(body.msssize()), static_cast<int>(body.ringbacktimer()),
        static_cast<int>(body.ringingtimer()), static_cast<int>(body.sipmobility()),
        body.isenablegruu(), static_cast<int>(body.audioenginetype()), TAKE_STRING(body, curpani),
        body.isvceconfigenabled(), body.isgcfconfigenabled(), body.isnsdsserviceenabled(),
        body.wifipreconditionenabled(), body.ismsrpbearerused(),
        static_cast<int>(body.subscribertimer()), body.issubscribereg(), body.usekeepalive(),
        TAKE_STRING(body, msrptranstype), TAKE_STRING(body, hostname),
        helpers::toVector(body.servicelist()), helpers::toTags(body.featuretaglist()));

    record->SetTimer(body.timer1(), body.timer2(), body.timer4(), body.timera(), body.timerb(),
                     body.timerc(), body.timerd(), body.timere(), body.timerf(), body.timerg(),
                     body.timerh(), body.timeri(), body.timerj(), body.timerk(), body.timerts());

    if (body.has_mediaconfig()) {
        // The four strength tags are the client's own; the stack takes none.
        auto& m = *body.mutable_mediaconfig();
        record->SetMediaConfig(
            m.audioport(), m.isamroctecalign(), TAKE_STRING(m, audiocodec), m.dtmfmode(),
            TAKE_STRING(m, audioas), TAKE_STRING(m, audiors), TAKE_STRING(m, audiorr),
            TAKE_STRING(m, amrmodechangecapability), TAKE_STRING(m, amrmaxred),
            TAKE_STRING(m, amrmode), TAKE_STRING(m, amrwbmode), m.amrpayload(), m.amrbepayload(),
            m.amrwbpayload(), m.amrbewbpayload(), m.amropenpayload(), m.dtmfpayload(),
            m.dtmfwbpayload(), m.ptime(), m.maxtime(), TAKE_STRING(m, videocodec), m.videoport(),
            m.framerate(), TAKE_STRING(m, displayformat), TAKE_STRING(m, packetizationmode),
            m.h264vgapayload(), m.h264vgalpayload(), m.h264qvgapayload(), m.h264qvgalpayload(),
            m.h264cifpayload(), m.h264ciflpayload(), m.h263qcifpayload(), m.videoas(), m.videors(),
            m.videorr(), m.audioavpf(), m.audiosrtp(), m.videoavpf(), m.videosrtp(),
            m.videocapabilities(), m.enablescr(), static_cast<int>(m.rtptimeout()),
            static_cast<int>(m.rtcptimeout()), m.audiortcpxr(), m.videortcpxr(), m.enableevscodec(),
            TAKE_STRING(m, evsdiscontinuoustransmission), TAKE_STRING(m, evsdtxrecv),
            TAKE_STRING(m, evsheaderfull), TAKE_STRING(m, evsmodeswitch),
            TAKE_STRING(m, evschannelsend), TAKE_STRING(m, evschannelrecv),
            TAKE_STRING(m, evschannelawarereceive), TAKE_STRING(m, evscodecmoderequest),
            TAKE_STRING(m, evsbitratesend), TAKE_STRING(m, evsbitratereceive),
            TAKE_STRING(m, evsbandwidthsend), TAKE_STRING(m, evsbandwidthreceive),
            static_cast<int>(m.evspayload()), TAKE_STRING(m, evsdefaultbandwidth),
            TAKE_STRING(m, evsdefaultbitrate), m.enablertcponactivecall(), m.enableavsync());
    }

    s_velar->OnRequest(token, record);
}

IMS_DISPATCH(DispatchUADeletion) {
    IMS_LOGI("%s()", __func__);
    auto& body = TakeBody(request.mutable_requestuadeletion());
    s_velar->OnRequest(token,
                       new PrimitiveData<int>(request.reqid(), static_cast<int>(body.handle())));
}
