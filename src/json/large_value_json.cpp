#include "json/large_value_json.h"

#include <cstddef>
#include <utility>

#include "json/json_writer.h"

namespace Quask::Json {

LargeValueJson::LargeValueJson(Dovan::ZeroedBytes buffer, unsigned valueSize,
                               std::optional<Dovan::Platform::ValueType> const& valueType,
                               bool showEmpty, std::ostream& output,
                               QuaskReaderGeneric const& reader)
    : KeptChain(std::move(buffer), valueSize, std::size_t{valueSize} + 1, showEmpty, reader),
      valueType_(valueType),
      text_(output)
{}

void LargeValueJson::write(unsigned bucket, std::span<Element const> elements)
{
    JsonWriter<PiecewiseText> writer(text_);
    writer.beginObject();
    writer.member("bucket", bucket);
    writer.name("elements");
    writer.beginArray();
    for (Element const& element : elements) {
        writer.beginObject();
        writer.member("slot", element.index);
        if (valueType_) {
            writer.name("value");
            writer.value(*valueType_, element.bytes.get());
        }
        writer.name("hex");
        writer.hex(element.bytes.get(), size);
        writer.member("lookaside", element.lookaside);
        writer.endObject();
    }
    writer.endArray();
    writer.endObject();
    text_.Put('\n');
    text_.writeOut();
}

}  // namespace Quask::Json
