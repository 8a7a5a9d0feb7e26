#include "html/foreign_content.h"

#include <algorithm>
#include <array>
#include <utility>

namespace OrvelParser {
namespace {

using NamePair = std::pair<std::string_view, std::string_view>;

// Lower-case name to mixed-case name, sorted by the lower-case name.
constexpr NamePair kSvgTags[] = {
    {"altglyph", "altGlyph"}, {"altglyphdef", "altGlyphDef"}, {"altglyphitem", "altGlyphItem"},
    {"animatecolor", "animateColor"}, {"animatemotion", "animateMotion"},
    {"animatetransform", "animateTransform"}, {"clippath", "clipPath"}, {"feblend", "feBlend"},
    {"fecolormatrix", "feColorMatrix"}, {"fecomponenttransfer", "feComponentTransfer"},
    {"fecomposite", "feComposite"}, {"feconvolvematrix", "feConvolveMatrix"},
    {"fediffuselighting", "feDiffuseLighting"}, {"fedisplacementmap", "feDisplacementMap"},
    {"fedistantlight", "feDistantLight"}, {"fedropshadow", "feDropShadow"}, {"feflood", "feFlood"},
    {"fefunca", "feFuncA"}, {"fefuncb", "feFuncB"}, {"fefuncg", "feFuncG"}, {"fefuncr", "feFuncR"},
    {"fegaussianblur", "feGaussianBlur"}, {"feimage", "feImage"}, {"femerge", "feMerge"},
    {"femergenode", "feMergeNode"}, {"femorphology", "feMorphology"}, {"feoffset", "feOffset"},
    {"fepointlight", "fePointLight"}, {"fespecularlighting", "feSpecularLighting"},
    {"fespotlight", "feSpotLight"}, {"fetile", "feTile"}, {"feturbulence", "feTurbulence"},
    {"foreignobject", "foreignObject"}, {"glyphref", "glyphRef"}, {"lineargradient", "linearGradient"},
    {"radialgradient", "radialGradient"}, {"textpath", "textPath"},
};

constexpr NamePair kSvgAttributes[] = {
    {"attributename", "attributeName"}, {"attributetype", "attributeType"},
    {"basefrequency", "baseFrequency"}, {"baseprofile", "baseProfile"}, {"calcmode", "calcMode"},
    {"clippathunits", "clipPathUnits"}, {"diffuseconstant", "diffuseConstant"}, {"edgemode", "edgeMode"},
    {"filterunits", "filterUnits"}, {"glyphref", "glyphRef"}, {"gradienttransform", "gradientTransform"},
    {"gradientunits", "gradientUnits"}, {"kernelmatrix", "kernelMatrix"},
    {"kernelunitlength", "kernelUnitLength"}, {"keypoints", "keyPoints"}, {"keysplines", "keySplines"},
    {"keytimes", "keyTimes"}, {"lengthadjust", "lengthAdjust"}, {"limitingconeangle", "limitingConeAngle"},
    {"markerheight", "markerHeight"}, {"markerunits", "markerUnits"}, {"markerwidth", "markerWidth"},
    {"maskcontentunits", "maskContentUnits"}, {"maskunits", "maskUnits"}, {"numoctaves", "numOctaves"},
    {"pathlength", "pathLength"}, {"patterncontentunits", "patternContentUnits"},
    {"patterntransform", "patternTransform"}, {"patternunits", "patternUnits"}, {"pointsatx", "pointsAtX"},
    {"pointsaty", "pointsAtY"}, {"pointsatz", "pointsAtZ"}, {"preservealpha", "preserveAlpha"},
    {"preserveaspectratio", "preserveAspectRatio"}, {"primitiveunits", "primitiveUnits"}, {"refx", "refX"},
    {"refy", "refY"}, {"repeatcount", "repeatCount"}, {"repeatdur", "repeatDur"},
    {"requiredextensions", "requiredExtensions"}, {"requiredfeatures", "requiredFeatures"},
    {"specularconstant", "specularConstant"}, {"specularexponent", "specularExponent"},
    {"spreadmethod", "spreadMethod"}, {"startoffset", "startOffset"}, {"stddeviation", "stdDeviation"},
    {"stitchtiles", "stitchTiles"}, {"surfacescale", "surfaceScale"}, {"systemlanguage", "systemLanguage"},
    {"tablevalues", "tableValues"}, {"targetx", "targetX"}, {"targety", "targetY"},
    {"textlength", "textLength"}, {"viewbox", "viewBox"}, {"viewtarget", "viewTarget"},
    {"xchannelselector", "xChannelSelector"}, {"ychannelselector", "yChannelSelector"},
    {"zoomandpan", "zoomAndPan"},
};

struct NamespacedAttribute {
  std::string_view qualified;  // as written, lower case
  AttributeNamespace ns;
  std::string_view local;
};

constexpr NamespacedAttribute kNamespacedAttributes[] = {
    {"xlink:actuate", AttributeNamespace::kXlink, "actuate"},
    {"xlink:arcrole", AttributeNamespace::kXlink, "arcrole"},
    {"xlink:href", AttributeNamespace::kXlink, "href"},
    {"xlink:role", AttributeNamespace::kXlink, "role"},
    {"xlink:show", AttributeNamespace::kXlink, "show"},
    {"xlink:title", AttributeNamespace::kXlink, "title"},
    {"xlink:type", AttributeNamespace::kXlink, "type"},
    {"xml:lang", AttributeNamespace::kXml, "lang"},
    {"xml:space", AttributeNamespace::kXml, "space"},
    {"xmlns", AttributeNamespace::kXmlns, "xmlns"},
    {"xmlns:xlink", AttributeNamespace::kXmlns, "xlink"},
};

template <size_t N>
constexpr bool IsSorted(const NamePair (&table)[N]) {
  for (size_t i = 1; i < N; ++i) {
    if (!(table[i - 1].first < table[i].first)) return false;
  }
  return true;
}
static_assert(IsSorted(kSvgTags) && IsSorted(kSvgAttributes));

template <size_t N>
std::string_view Lookup(const NamePair (&table)[N], std::string_view name) {
  const auto* found = std::lower_bound(std::begin(table), std::end(table), name,
                                       [](const NamePair& row, std::string_view key) { return row.first < key; });
  return found != std::end(table) && found->first == name ? found->second : name;
}

}  // namespace

std::string_view AdjustSvgTagName(std::string_view name) noexcept { return Lookup(kSvgTags, name); }

SinkAttribute AdjustForeignAttribute(Namespace ns, SinkAttribute attribute) noexcept {
  if (ns == Namespace::kHtml) return attribute;
  if (ns == Namespace::kSvg) {
    attribute.name = Lookup(kSvgAttributes, attribute.name);
  } else if (attribute.name == "definitionurl") {
    attribute.name = "definitionURL";
  }
  if (attribute.name.size() >= 5 && attribute.name[0] == 'x') {
    for (const NamespacedAttribute& row : kNamespacedAttributes) {
      if (row.qualified == attribute.name) {
        attribute.ns = row.ns;
        attribute.name = row.local;
        break;
      }
    }
  }
  return attribute;
}

}  // namespace OrvelParser
