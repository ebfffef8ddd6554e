// A second start that hands its text to the first instance, which the benchmark is.
#include "tvutil2/threads/single_instance.h"

namespace {

class Second : public NUtil::CSingleInstance {
  public:
    void OnSecondInstance() override { SetData("-url ssh://alice@192.0.2.10:22"); }
};

}  // namespace

int main() {
    Second second;
    return second.Create(u"StartBench") ? 1 : 0;
}
