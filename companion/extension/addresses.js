// Addresses as they are told: only so much of one as tells pages apart.

/** UTF-16 units of an address that are told at most. */
export const longestAddress = 1024;

/**
 * The beginning of an address; a character that takes two units is never cut in two.
 * @param {string | undefined} address
 * @returns {string} at most longestAddress units; empty where there is no address
 */
export function cutAddress(address) {
    if (address === undefined || address.length <= longestAddress) {
        return address ?? "";
    }
    const endsInside = isHighSurrogate(address.charCodeAt(longestAddress - 1));
    return address.slice(0, endsInside ? longestAddress - 1 : longestAddress);
}

function isHighSurrogate(unit) {
    return unit >= 0xd800 && unit <= 0xdbff;
}
