#pragma once

#include <string>
#include <string_view>

namespace folvant::render {

// A small SVG writer: elements are appended in order, groups nest, and every text and
// attribute value is escaped. Numbers are written with at most two decimals.
class Svg {
 public:
  // Starts the document: `width` × `height` user units, with a title and description that
  // screen readers announce.
  Svg(double width, double height, std::string_view title, std::string_view description);

  // <g class="..."> ... </g>
  void OpenGroup(std::string_view cssClass);
  void CloseGroup();
  // A rectangle; a non-empty `tip` becomes its <title> (shown on hover).
  void Rect(double x, double y, double width, double height, std::string_view cssClass,
            std::string_view tip = {});
  void Line(double x1, double y1, double x2, double y2, std::string_view cssClass);
  // A polyline through the points, given as "x,y x,y ...".
  void Polyline(std::string_view points, std::string_view cssClass);
  void Circle(double cx, double cy, double r, std::string_view cssClass, std::string_view tip = {});
  enum class Anchor { kStart, kMiddle, kEnd };
  void Text(double x, double y, std::string_view text, Anchor anchor, std::string_view cssClass);

  // The finished document.
  std::string Finish();

  // "12.5", "3", "-0.25": a coordinate as SVG reads it.
  static std::string Number(double value);
  static void AppendEscaped(std::string& out, std::string_view text);

 private:
  void Attribute(std::string_view name, double value);
  void Attribute(std::string_view name, std::string_view value);
  void Tip(std::string_view tip, std::string_view element);

  std::string out_;
  int open_ = 0;  // groups not yet closed
};

}  // namespace folvant::render
