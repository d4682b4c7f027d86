/// @file
/// What a host relies on, whatever flags it is compiled with. Prints the DLL's version, and what does not
/// hold.
#include <string>

#include "marvo.h"

#include <cstdio>

namespace {

int wrong = 0;

void expect(bool holds, int line) {
    if (!holds) {
        std::printf("line %d does not hold\n", line);
        ++wrong;
    }
}

class Receiver : public vcore::vObject {
public:
    void add(int a, short b) { sum_ += a * b; }
    int sum_ = 0;
};

void nullObjects() {
    const vcore::str* text = nullptr;
    expect(text->len() == 0 && text->GetLength() == 0 && text->bufferSize() == 0, __LINE__);
    expect(text->oleStr() == nullptr && *text->getStr() == 0 && *text->getS() == 0, __LINE__);
    expect(text->toLong() == 0 && text->toInt64() == 0 && text->toDouble() == 0, __LINE__);
    expect(text->findStr(L"a") == -1 && !text->startsWith(L"a") && !text->equal(L"", true), __LINE__);
    expect(text->compare(L"a") < 0 && text->compareI(L"a") < 0 && text->right(1).len() == 0, __LINE__);
    const vcore::var* value = nullptr;
    expect(value->isEmpty() && value->getI() == 0 && *value->getS() == 0 && !value->getB(), __LINE__);
}

void strings() {
    vcore::str text(L"match");
    text += L" 7";
    text.Append(vcore::str(" of "));
    text += vcore::strtoken(L"12 and more", 2);
    expect(text == L"match 7 of 12" && std::string(text.getStr()) == "match 7 of 12", __LINE__);
    expect(vcore::str(text.right(2)).toLong() == 12 && vcore::var(text.oleStr()).isS(), __LINE__);
    vcore::alist<vcore::str> list;
    expect(list.add(new vcore::str(text)) && *list[0] == text, __LINE__);
}

void signals() {
    Receiver emitter;
    Receiver receiver;
    expect(emitter.connect(L"pair", &receiver, &receiver, &Receiver::add), __LINE__);
    expect(emitter.emitSignal(L"pair", sizeof(int) + sizeof(short), 6, short{7}) == 1, __LINE__);
    expect(receiver.sum_ == 42 && receiver.sender() == &emitter, __LINE__);
}

void version() {
    vcore::lib dll;
    vcore::buf resource;
    expect(dll.open(L"marvo.dll", true) && dll.loadResource(MAKEINTRESOURCEW(1), 16, resource), __LINE__);
    // The fixed part stands behind three words and the key.
    const auto* const words = reinterpret_cast<const unsigned short*>(resource.data()) + 20;
    expect(resource.size() > 92, __LINE__);
    if (resource.size() > 92) {
        std::printf("%d.%d.%d\n", words[5], words[4], words[7]);
    }
}

} // namespace

int main() {
    nullObjects();
    strings();
    signals();
    version();
    expect(dvFE.speed() == 1.0 && dvFE.frameSize() == 0 && !dvFE.playElement(0), __LINE__);
    return wrong;
}
