#include "bench/jpegxr/jxrlib_peer.h"

#include <memory>
#include <stdexcept>

#define INITGUID
#include <JXRGlue.h>

namespace orbbench {

using orbhost::Bytes;
using orbhost::Image;

namespace {

void check(ERR status) {
  if (Failed(status)) throw std::runtime_error("jxrlib fails");
}

// Objects release themselves through a pointer of their own.
template <class Object>
struct Release {
  void operator()(Object* object) const { object->Release(&object); }
};
template <class Object>
using Owner = std::unique_ptr<Object, Release<Object>>;

struct CloseStream {
  void operator()(WMPStream* stream) const { stream->Close(&stream); }
};

template <class Object>
Owner<Object> create(const PKIID& id) {
  PKCodecFactory* factory = nullptr;
  check(PKCreateCodecFactory(&factory, WMP_SDK_VERSION));
  const Owner<PKCodecFactory> owner(factory);
  void* object = nullptr;
  check(factory->CreateCodec(&id, &object));
  return Owner<Object>(static_cast<Object*>(object));
}

WMPStream* openMemory(Bytes& bytes) {
  WMPStream* stream = nullptr;
  check(CreateWS_Memory(&stream, bytes.data(), bytes.size()));
  return stream;
}

}  // namespace

Bytes jxrlibEncode(const Image& image, int quantiser, bool halvedChroma) {
  Bytes file(2 * image.size() + 4096);
  WMPStream* const stream = openMemory(file);
  const Owner<PKImageEncode> encoder = create<PKImageEncode>(IID_PKImageWmpEncode);
  CWMIStrCodecParam parameters = {};
  parameters.cfColorFormat = halvedChroma ? YUV_420 : YUV_444;
  parameters.bdBitDepth = BD_LONG;
  parameters.bfBitstreamFormat = SPATIAL;
  parameters.olOverlap = OL_ONE;
  parameters.sbSubband = SB_ALL;
  for (U8* const index : {&parameters.uiDefaultQPIndex, &parameters.uiDefaultQPIndexYLP,
                          &parameters.uiDefaultQPIndexYHP, &parameters.uiDefaultQPIndexU,
                          &parameters.uiDefaultQPIndexULP, &parameters.uiDefaultQPIndexUHP,
                          &parameters.uiDefaultQPIndexV, &parameters.uiDefaultQPIndexVLP,
                          &parameters.uiDefaultQPIndexVHP}) {
    *index = static_cast<U8>(quantiser);
  }
  // The encoder closes the stream.
  check(encoder->Initialize(encoder.get(), stream, &parameters, sizeof parameters));
  check(encoder->SetPixelFormat(encoder.get(), GUID_PKPixelFormat24bppRGB));
  check(encoder->SetSize(encoder.get(), image.width(), image.height()));
  check(encoder->SetResolution(encoder.get(), 96, 96));
  check(encoder->WritePixels(encoder.get(), static_cast<U32>(image.height()),
                             const_cast<U8*>(image.row(0)), static_cast<U32>(image.rowBytes())));
  file.resize(static_cast<size_t>(encoder->WMP.nOffImage + encoder->WMP.nCbImage));
  return file;
}

Image jxrlibDecode(const Bytes& file) {
  Bytes copy = file;
  const std::unique_ptr<WMPStream, CloseStream> stream(openMemory(copy));
  const Owner<PKImageDecode> decoder = create<PKImageDecode>(IID_PKImageWmpDecode);
  check(decoder->Initialize(decoder.get(), stream.get()));
  I32 width = 0;
  I32 height = 0;
  check(decoder->GetSize(decoder.get(), &width, &height));
  CWMImageInfo& info = decoder->WMP.wmiI;
  decoder->WMP.wmiSCP.bfBitstreamFormat = SPATIAL;
  decoder->WMP.wmiSCP.uAlphaMode = 0;
  decoder->WMP.wmiSCP.sbSubband = SB_ALL;
  info.cfColorFormat = CF_RGB;
  info.bdBitDepth = BD_8;
  info.cBitsPerUnit = 24;
  info.bRGB = TRUE;
  info.cThumbnailWidth = info.cWidth;
  info.cThumbnailHeight = info.cHeight;
  info.cROIWidth = info.cWidth;
  info.cROIHeight = info.cHeight;
  Image image(width, height, 3);
  const PKRect whole = {0, 0, width, height};
  check(decoder->Copy(decoder.get(), &whole, image.row(0), static_cast<U32>(image.rowBytes())));
  return image;
}

}  // namespace orbbench
