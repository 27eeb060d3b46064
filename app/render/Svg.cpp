#include "app/render/Svg.h"

#include <cmath>
#include <cstdio>

namespace folvant::render {

Svg::Svg(double width, double height, std::string_view title, std::string_view description) {
  out_ = "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\"";
  Attribute("width", width);
  Attribute("height", height);
  out_ += " viewBox=\"0 0 " + Number(width) + " " + Number(height) + "\"";
  out_ += " aria-labelledby=\"chart-title chart-desc\">\n<title id=\"chart-title\">";
  AppendEscaped(out_, title);
  out_ += "</title>\n<desc id=\"chart-desc\">";
  AppendEscaped(out_, description);
  out_ +=
      "</desc>\n<style>\n"
      "text { font-family: system-ui, -apple-system, 'Segoe UI', sans-serif; font-size: 12px; "
      "fill: #333; }\n"
      ".heading { font-size: 15px; font-weight: 600; }\n"
      ".axis { stroke: #888; stroke-width: 1; }\n"
      ".grid { stroke: #e4e4e4; stroke-width: 1; }\n"
      ".deposit { fill: #2e8b57; }\n"
      ".debit { fill: #c0392b; }\n"
      ".net { fill: none; stroke: #1f4e99; stroke-width: 2; }\n"
      ".net-point { fill: #1f4e99; }\n"
      ".muted { fill: #777; }\n"
      "</style>\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
}

std::string Svg::Number(double value) {
  if (!std::isfinite(value)) return "0";
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.2f", value);
  std::string text = buffer;
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  if (text == "-0") text = "0";
  return text;
}

void Svg::AppendEscaped(std::string& out, std::string_view text) {
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default:
        // Control characters other than tab and line ends are not allowed in XML at all.
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') {
          out += ' ';
        } else {
          out += c;
        }
    }
  }
}

void Svg::Attribute(std::string_view name, double value) {
  out_ += ' ';
  out_ += name;
  out_ += "=\"" + Number(value) + '"';
}

void Svg::Attribute(std::string_view name, std::string_view value) {
  out_ += ' ';
  out_ += name;
  out_ += "=\"";
  AppendEscaped(out_, value);
  out_ += '"';
}

void Svg::Tip(std::string_view tip, std::string_view element) {
  if (tip.empty()) {
    out_ += "/>\n";
    return;
  }
  out_ += "><title>";
  AppendEscaped(out_, tip);
  out_ += "</title></";
  out_ += element;
  out_ += ">\n";
}

void Svg::OpenGroup(std::string_view cssClass) {
  out_ += "<g";
  Attribute("class", cssClass);
  out_ += ">\n";
  ++open_;
}

void Svg::CloseGroup() {
  if (open_ == 0) return;
  out_ += "</g>\n";
  --open_;
}

void Svg::Rect(double x, double y, double width, double height, std::string_view cssClass,
               std::string_view tip) {
  out_ += "<rect";
  Attribute("x", x);
  Attribute("y", y);
  Attribute("width", std::max(0.0, width));
  Attribute("height", std::max(0.0, height));
  Attribute("class", cssClass);
  Tip(tip, "rect");
}

void Svg::Line(double x1, double y1, double x2, double y2, std::string_view cssClass) {
  out_ += "<line";
  Attribute("x1", x1);
  Attribute("y1", y1);
  Attribute("x2", x2);
  Attribute("y2", y2);
  Attribute("class", cssClass);
  out_ += "/>\n";
}

void Svg::Polyline(std::string_view points, std::string_view cssClass) {
  out_ += "<polyline";
  Attribute("points", points);
  Attribute("class", cssClass);
  out_ += "/>\n";
}

void Svg::Circle(double cx, double cy, double r, std::string_view cssClass, std::string_view tip) {
  out_ += "<circle";
  Attribute("cx", cx);
  Attribute("cy", cy);
  Attribute("r", r);
  Attribute("class", cssClass);
  Tip(tip, "circle");
}

void Svg::Text(double x, double y, std::string_view text, Anchor anchor,
               std::string_view cssClass) {
  out_ += "<text";
  Attribute("x", x);
  Attribute("y", y);
  if (anchor != Anchor::kStart) {
    Attribute("text-anchor", anchor == Anchor::kMiddle ? "middle" : "end");
  }
  if (!cssClass.empty()) Attribute("class", cssClass);
  out_ += '>';
  AppendEscaped(out_, text);
  out_ += "</text>\n";
}

std::string Svg::Finish() {
  while (open_ > 0) CloseGroup();
  out_ += "</svg>\n";
  return std::move(out_);
}

}  // namespace folvant::render
