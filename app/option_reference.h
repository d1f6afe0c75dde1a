#ifndef APP_OPTION_REFERENCE_H_
#define APP_OPTION_REFERENCE_H_

namespace app {

// The web site of the product. Its 19 characters fill the frame of the banner.
inline constexpr char kHostName[] = "www.zefa-images.org";
static_assert(sizeof(kHostName) - 1 == 19);

// What every option does, a paragraph a group, without a line end behind the last line.
extern const char* const kOptionReference;

}  // namespace app

#endif  // APP_OPTION_REFERENCE_H_
