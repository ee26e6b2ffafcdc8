#pragma once

#include <QPushButton>
#include <string_view>

namespace lumo {

// A push button with rounded edges, and a symbol before its text if it has one.
class Button final : public QPushButton {
  public:
    enum class Kind {
        bordered,
        prominent,  // filled with the accent colour
        borderless, // only its text, in the accent colour
    };

    explicit Button(std::string_view text, Kind kind = Kind::bordered,
                    std::string_view symbol = {});

    // The colours by which the button says that it listens.
    void setRecording(bool isRecording);
    void setSymbol(std::string_view symbol);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    int symbolSize() const;
    int contentWidth(int textWidth) const;
    QColor textColor() const;
    void paintBackground(QPainter &painter) const;

    Kind kind_;
    std::string_view symbol_;
    bool isRecording_ = false;
};

} // namespace lumo
