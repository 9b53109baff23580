// Proves that qkdynam::json reaches a program built outside the tree: a value
// to JSON and back, and a refusal that names its JSON path.
#include <qkdynam_json/VarDataJson.h>

#include <cstdio>

int main() {
    VarData reading = VarData::dict();
    reading.setValue("Value", VarData::num(4.25));
    const qkdynam_json::Json json = qkdynam_json::ToJson(reading);
    if (qkdynam_json::FromJson(json).Compare(reading) != 0) {
        std::puts("json consumer: the value changed on the way back");
        return 1;
    }
    try {
        qkdynam_json::FromJson(qkdynam_json::Json::parse(R"({"type":"Numeric","value":"x"})"));
    } catch (const qkdynam_json::JsonMappingError& error) {
        std::printf("json consumer: %s; refused at %s\n", json.dump().c_str(), error.path().c_str());
        return 0;
    }
    return 1;
}
