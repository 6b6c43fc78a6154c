#include "json/large_value_json.h"

#include <cstddef>
#include <utility>

#include "json/element.h"

namespace Quask::Json {

LargeValueJson::LargeValueJson(Dovan::ZeroedBytes buffer, unsigned valueSize,
                               std::optional<Dovan::Platform::ValueType> const& valueType,
                               bool showEmpty, std::ostream& output,
                               QuaskReaderGeneric const& reader)
    : KeptChain(std::move(buffer), valueSize, std::size_t{valueSize} + 1, showEmpty, reader),
      valueType_(valueType),
      text_(output),
      writer_(text_)
{}

void LargeValueJson::write(unsigned bucket, std::span<Element const> elements)
{
    beginBucket(writer_, bucket);
    for (Element const& element : elements) {
        writeElement(writer_, &element == elements.data(), element.index, valueType_,
                     element.bytes.get(), size, element.lookaside);
    }
    endBucket(writer_);
    text_.writeOut();
}

}  // namespace Quask::Json
