// A host that keeps settings files in memory.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "messaging/request_types.h"
#include "tests/fakes/fake_host.h"

namespace luadui {

class FakeSettings : public FakeHost {
  public:
    FakeSettings() {
        onAsk = [this](CQueueReqItem& request) { _answer(request); };
    }

    std::map<std::string, StringMap> files;
    // What was asked for, in order: "read user.cfg skin", "write user.cfg skin blue".
    std::vector<std::string> calls;

  private:
    void _answer(CQueueReqItem& request) {
        CUIData params;
        request.GetDataShared("Params", params);
        const std::string name = params.GetDataString("FileName"), key = params.GetDataString("Key");
        StringMap& file = files[name];
        switch (RequestTypeOf(request)) {
            case kReqConfigRead:
                if (file.count(key)) request.SetData("result", file[key]);
                calls.push_back("read " + name + ' ' + key);
                break;
            case kReqConfigWrite:
                file[key] = params.GetDataString("Value");
                calls.push_back("write " + name + ' ' + key + ' ' + file[key]);
                break;
            case kReqConfigReadAll:
                for (const auto& [each, value] : file) params.SetData(each, value);
                calls.push_back("all " + name);
                break;
            case kReqConfigErase:
                request.SetData("result", file.erase(key) ? "true" : "false");
                calls.push_back("erase " + name + ' ' + key);
                break;
        }
    }
};

}  // namespace luadui
