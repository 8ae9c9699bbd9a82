#version 330
in vec2 uv;
uniform sampler2D videoTexture;
uniform float multiplier16bit;
uniform float skinColorRange;
uniform float redden;
uniform float whitening;
uniform float pinking;
uniform vec2 viewSize;
out vec4 colourOut;
vec4 swapChannel(in vec4 eColor){return vec4(eColor.g, eColor.b, eColor.a, eColor.r);}
vec4 colorAdjust(vec4 fragColor){
    if ((whitening != 0.0)) {
        fragColor.xyz = clamp (mix (fragColor.xyz, (vec3(1.0, 1.0, 1.0) -
        ((vec3(1.0, 1.0, 1.0) - fragColor.xyz) * (vec3(1.0, 1.0, 1.0) - fragColor.xyz))),
        (whitening * dot (vec3(0.299, 0.587, 0.114), fragColor.xyz))), 0.0, 1.0);
    };
    if ((redden != 0.0)) {
        lowp vec3 redColor = mix (fragColor.xyz, (vec3(1.0, 1.0, 1.0) -
            ((vec3(1.0, 1.0, 1.0) - fragColor.xyz) * (vec3(1.0, 1.0, 1.0) - fragColor.xyz))),
        (0.2 * redden));
        lowp vec3 tmpvar_3 = mix (vec3(dot (redColor, vec3(0.299, 0.587, 0.114))),
            redColor, (1.0 + redden));
        lowp vec3 tmpvar_4 = mix (tmpvar_3.xyy, tmpvar_3, 0.5);
        lowp float tmpvar_5 = dot (tmpvar_4, vec3(0.299, 0.587, 0.114));
        fragColor.xyz = clamp (mix (tmpvar_3, mix (tmpvar_4, sqrt(tmpvar_4), tmpvar_5),
                (redden * tmpvar_5)), 0.0, 1.0);
    };
    if ((pinking != 0.0)) {
        lowp vec3 pinkColor;
        pinkColor.x = ((sqrt(fragColor.x) * 0.41) + (0.59 * fragColor.x));
        pinkColor.y = ((sqrt(fragColor.y) * 0.568) + (0.432 * fragColor.y));
        pinkColor.z = ((sqrt(fragColor.z) * 0.7640001) + (0.2359999 * fragColor.z));
        fragColor.xyz = clamp (mix (fragColor.xyz, pinkColor,
            (pinking * dot (vec3(0.299, 0.587, 0.114), fragColor.xyz))), 0.0, 1.0);
    };
    return fragColor;
}
vec3 rgb2hsv(vec3 c) {
    vec4 K = vec4(0.0, -1.0 / 3.0, 2.0 / 3.0, -1.0);
    vec4 p = mix(vec4(c.bg, K.wz), vec4(c.gb, K.xy), step(c.b, c.g));
    vec4 q = mix(vec4(p.xyw, c.r), vec4(c.r, p.yzx), step(p.x, c.r));
    
    float d = q.x - min(q.w, q.y);
    float e = 1.0e-10;
    return vec3(abs(q.z + (q.w - q.y) / (6.0 * d + e)), d / (q.x + e), q.x);
}
float skinTest(vec3 rgb, float skinRange){
    const float skinHue = 0.05;
    vec3 colorHSV = rgb2hsv(rgb);
    float hue = colorHSV.x;
    float dist = hue - skinHue;
    if (dist > 0.5){dist -= 1.0;}
    if (dist < -0.5){dist += 1.0;}
    return 1.0 - smoothstep(skinRange - 0.01, skinRange, abs(dist)/0.5);
}
#define SIGMA 10
#define BSIGMA 0.1
const float bZ = 0.250664;
float normpdf3(in vec3 v, in float sigma) {
	return 0.39894 * exp(-0.5 * dot(v,v) / (sigma * sigma)) / sigma;
}
vec3 bilateralBlur(vec4 srcColor){
    vec3 final_colour = vec3(0.0);
    float Z = 0.0;
    vec3 cc;
    float factor;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(-1),float(-1))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039695;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(-1),float(0))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039894* 0.039695;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(-1),float(1))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039695;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(0),float(-1))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039894;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(0),float(0))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039894* 0.039894;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(0),float(1))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039894;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(1),float(-1))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039695;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(1),float(0))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039894* 0.039695;
    Z += factor;
    final_colour += factor * cc;
    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(1),float(1))) / viewSize.xy).rgb;
    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * 0.039695* 0.039695;
    Z += factor;
    final_colour += factor * cc;
    return final_colour / Z;
}
void main(){
   colourOut = texture(videoTexture, gl_FragCoord.xy / viewSize.xy);
   float skinFactor = skinTest(colourOut.gba, skinColorRange);
   if(skinFactor > 0){
       colourOut = vec4(bilateralBlur(colourOut), colourOut.a);
    }
   colourOut = colorAdjust(swapChannel(colourOut)) * multiplier16bit;
	//colourOut = vec4(colourOut.g, colourOut.b, colourOut.a, colourOut.r) * multiplier16bit; 
	colourOut = vec4(colourOut.a * colourOut.r, colourOut.a * colourOut.g, colourOut.a * colourOut.b, colourOut.a); 
}
