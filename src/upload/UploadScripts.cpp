#include "upload/UploadScripts.h"

namespace tavrine {

QString defaultUploadScript() {
    return QStringLiteral(R"js(// Write your own upload logic here, using your own API keys/credentials.
// Return a URL string, or a Promise that resolves to one.
function uploadImage(imageBase64, fileName) {
  // An example: upload the picture to your own server.
  //
  // return new Promise(function (resolve, reject) {
  //   nativeHTTPRequest(
  //     "https://your-server.example.com/upload",
  //     "POST",
  //     {
  //       "Content-Type": "application/json",
  //       "Authorization": "Bearer YOUR_TOKEN"
  //     },
  //     JSON.stringify({ fileName: fileName, image: imageBase64 }),
  //     function (error, status, responseBody) {
  //       if (error) return reject(error);
  //       if (status < 200 || status > 299) {
  //         return reject("Upload failed: HTTP " + status);
  //       }
  //       resolve(JSON.parse(responseBody).url);
  //     }
  //   );
  // });

  throw new Error("uploadImage() is not implemented yet");
}
)js");
}

QString imgBBUploadScript() {
    return QStringLiteral(R"js(// Uploads to ImgBB and returns the picture's link.
function uploadImage(imageBase64, fileName) {
  return new Promise(function (resolve, reject) {
    const apiKey = ""; // paste your ImgBB API key

    // ImgBB wants raw base64 only.
    const cleanBase64 = imageBase64.replace(/^data:image\/\w+;base64,/, "");

    const body = "key=" + apiKey +
      "&image=" + encodeURIComponent(cleanBase64) +
      "&name=" + encodeURIComponent(fileName);

    nativeHTTPRequest(
      "https://api.imgbb.com/1/upload",
      "POST",
      { "Content-Type": "application/x-www-form-urlencoded" },
      body,
      function (error, status, responseBody) {
        if (error) {
          reject("Network error: " + error);
          return;
        }
        if (status !== 200) {
          reject("ImgBB error (status " + status + "): " + responseBody);
          return;
        }
        try {
          const json = JSON.parse(responseBody);
          if (json.success && json.data && json.data.url) {
            resolve(json.data.url);
          } else {
            reject("Unexpected response: " + responseBody);
          }
        } catch (parseError) {
          reject("Failed to parse response: " + responseBody);
        }
      }
    );
  });
}
)js");
}

} // namespace tavrine
